#include "apps/wine_notebook/unplayable.h"

#include <array>

namespace nuvelta::wine_notebook {

using virtual_notebook::Notebook;
using virtual_notebook::Scenario;

namespace {

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
};

}  // namespace

std::optional<std::string> WhyNotUnderWine(const Scenario& scenario) {
  for (const Obstacle& obstacle : kObstacles) {
    if (obstacle.has(scenario)) return obstacle.why;
  }
  return {};
}

}  // namespace nuvelta::wine_notebook
