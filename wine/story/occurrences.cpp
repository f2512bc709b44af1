#include "wine/story/occurrences.h"

#include <algorithm>

namespace nuvelta::wine {

using virtual_notebook::Event;
using virtual_notebook::Scenario;

std::vector<Occurrence> Occurrences(const Scenario& scenario) {
  std::vector<Occurrence> occurrences;
  for (uint32_t index = 0; index < scenario.events.size(); ++index) {
    const Event& event = scenario.events[index];
    for (uint32_t i = 0; i < event.repeat; ++i) {
      occurrences.push_back({.index = index, .repetition = i, .at = event.at + i * event.every});
    }
  }
  return occurrences;
}

size_t Played(const std::vector<Entry>& journal) {
  return static_cast<size_t>(std::ranges::count_if(
      journal, [](const Entry& entry) { return std::holds_alternative<EventPlayed>(entry.what); }));
}

}  // namespace nuvelta::wine
