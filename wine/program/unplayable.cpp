#include "wine/program/unplayable.h"

#include <algorithm>
#include <array>
#include <cctype>

#include "notebook/model/port_calls.h"

namespace nuvelta::wine_notebook {

using virtual_notebook::Notebook;
using virtual_notebook::Scenario;

namespace {

// Whether Wine takes services' variables from the key or one below it: a log folder
// outside the prefix would be written to, and emptied.
bool HoldsVariables(const std::string& key) {
  std::string lower = key + "\\";
  std::ranges::transform(lower, lower.begin(), [](unsigned char c) { return std::tolower(c); });
  return lower.find("\\session manager\\environment\\") != std::string::npos ||
         lower.find("\\profilelist\\") != std::string::npos;
}

bool SetsVariables(const Scenario& scenario) {
  using Kind = virtual_notebook::Action::Kind;
  return std::ranges::any_of(scenario.notebook.registry,
                             [](const auto& entry) { return HoldsVariables(entry.first); }) ||
         std::ranges::any_of(scenario.events, [](const auto& event) {
           const auto kind = event.action.kind;
           return (kind == Kind::kRegistrySet || kind == Kind::kRegistryDelete) &&
                  HoldsVariables(event.action.text);
         });
}

// The runtime begins a thread of the log library's by the same function.
bool NamesDetachedThreads(const Scenario& scenario) {
  constexpr virtual_notebook::KnownCall kCall = "StartDetachedThread";
  const auto named = [&](const auto& entry) { return entry.call == kCall.Name(); };
  return std::ranges::any_of(scenario.faults, named) || std::ranges::any_of(scenario.delays, named);
}

struct Obstacle {
  bool (*has)(const Scenario& scenario);
  const char* why;
};

constexpr std::array kObstacles{
    Obstacle{[](const Scenario& s) { return s.notebook.program_path != Notebook{}.program_path; },
             "\"program_path\": the executable lies where it is installed"},
    Obstacle{
        [](const Scenario& s) { return s.notebook.program_version != Notebook{}.program_version; },
        "\"program_version\": the executable carries its own version"},
    Obstacle{[](const Scenario& s) { return s.notebook.environment != Notebook{}.environment; },
             "\"environment\": Wine makes the environment of services itself"},
    Obstacle{SetsVariables, "a registry key from which Wine makes the environment of services"},
    Obstacle{NamesDetachedThreads,
             "a fault or delay of \"StartDetachedThread\": threads of the log library begin alike"},
};

}  // namespace

std::optional<std::string> WhyNotUnderWine(const Scenario& scenario) {
  for (const Obstacle& obstacle : kObstacles) {
    if (obstacle.has(scenario)) return obstacle.why;
  }
  return {};
}

}  // namespace nuvelta::wine_notebook
