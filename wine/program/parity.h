// Plays stories both ways and compares what they leave behind.
#pragma once

#include <string>
#include <vector>

#include "notebook/model/scenario.h"
#include "wine/program/wine_prefix.h"

namespace nuvelta::wine_notebook {

// Prints a line for each story, the differences, and a line of counts. Answers the
// program's exit code. Throws story::Interrupted.
int CompareAll(WinePrefix& prefix, const std::vector<std::string>& files,
               const std::vector<virtual_notebook::Scenario>& scenarios);

}  // namespace nuvelta::wine_notebook
