#include "wine/story/story_line.h"

#include <algorithm>

#include "wine/story/wine_devices.h"
#include "wine/story/wine_registry.h"

namespace nuvelta::wine {

using virtual_notebook::Action;
using virtual_notebook::Event;
using virtual_notebook::ModemDescription;
using virtual_notebook::Scenario;

namespace {

// The modem as the events before this one have made it; answers apart.
ModemDescription ModemBefore(const Scenario& scenario, size_t index) {
  ModemDescription modem = scenario.notebook.modem;
  for (size_t i = 0; i < index; ++i) {
    const Action& action = scenario.events[i].action;
    if (action.kind == Action::Kind::kModemChanges && action.modem.hardware_id) {
      modem.hardware_id = *action.modem.hardware_id;
    }
  }
  return modem;
}

}  // namespace

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

void PlayWithoutService(const Scenario& scenario, size_t index) {
  const Action& action = scenario.events[index].action;
  switch (action.kind) {
    case Action::Kind::kModemArrives:
      return InstallModemDevice(ModemBefore(scenario, index));
    case Action::Kind::kModemLeaves:
      return RemoveModemDevice();
    case Action::Kind::kModemChanges:
      if (action.modem.hardware_id) ChangeModemHardwareId(*action.modem.hardware_id);
      return;
    case Action::Kind::kRegistrySet:
      return SetRegistryValue(action.text, action.value_name, action.value);
    case Action::Kind::kRegistryDelete:
      return DeleteRegistryValue(action.text, action.value_name);
    default:
      return;  // nobody is there to notice, or the journal tells it
  }
}

}  // namespace nuvelta::wine
