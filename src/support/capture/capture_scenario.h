// A captured notebook as a scenario, docs/scenarios.md.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "support/capture/captured_notebook.h"

namespace nuvelta::support {

inline constexpr const char* kScenarioFile = "scenario.json";

struct CaptureFiles {
  // By their paths in the capture's folder, in UTF-8, with "/".
  std::map<std::string, std::string> files{};
  // What no notebook shows and the scenario had to say, a sentence each.
  std::vector<std::string> assumed{};
};

CaptureFiles MakeCaptureFiles(const CapturedNotebook& notebook);

}  // namespace nuvelta::support
