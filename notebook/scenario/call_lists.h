// The calls that a scenario may refuse or delay, as its documents list them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "notebook/model/port_calls.h"

namespace nuvelta::virtual_notebook {

// The ways in which the call can fail, as keys of a fault.
std::vector<std::string_view> WaysToFail(const PortCall& call);

// The table of docs/scenarios.md.
std::string CallTable();
// Of the "definitions" of docs/scenarios.schema.json those that list calls, as JSON.
std::string CallDefinitions();

}  // namespace nuvelta::virtual_notebook
