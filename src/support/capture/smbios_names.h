// The names in a firmware's table.
#pragma once

#include <string>
#include <vector>

#include "support/capture/captured_notebook.h"
#include "support/capture/renaming.h"

namespace nuvelta::support {

// Serial numbers, asset tags and the UUID; what makers write in the place of one is none.
std::vector<FoundName> NamesInFirmware(const Bytes& table);

// Every text of the structures by which a platform is known.
std::vector<std::string> PlatformTexts(const Bytes& table);

}  // namespace nuvelta::support
