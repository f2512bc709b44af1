// Reads scenarios; docs/scenarios.md describes the form.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "notebook/model/scenario.h"
#include "notebook/scenario/scenario_error.h"

namespace nuvelta::virtual_notebook {

// Bytes of a scenario's text.
inline constexpr size_t kLargestScenario = 4U << 20U;

// Reads the scenario in the file at `path`, and the raw files that it names,
// which lie relative to it. Throws ScenarioError: one line with the file, the
// JSON path (for broken JSON: line and column), what is wrong and what was
// expected. A scenario that is returned can be played.
Scenario ReadScenarioFile(const std::string& path);

// The same from `text`; errors name the scenario as `name_for_errors`.
Scenario ReadScenarioText(std::string_view text, const std::string& name_for_errors,
                          const std::string& folder_for_raw_files);

// The notebook that a scenario starts from: a supported one with a healthy modem.
Notebook DefaultNotebook();

}  // namespace nuvelta::virtual_notebook
