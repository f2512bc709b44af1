// Finds the names in a captured notebook, and the texts that must stay as they are.
#pragma once

#include <string>
#include <vector>

#include "support/capture/captured_notebook.h"
#include "support/capture/renaming.h"

namespace nuvelta::support {

// In the order in which they stand in the notebook; then those of the system.
std::vector<FoundName> FindNames(const CapturedNotebook& notebook,
                                 std::vector<FoundName> of_the_system);

// What the service decides by, and what its log is found by.
std::vector<std::string> DecisiveTexts(const CapturedNotebook& notebook);

void Rename(CapturedNotebook& notebook, const Renaming& renaming);

}  // namespace nuvelta::support
