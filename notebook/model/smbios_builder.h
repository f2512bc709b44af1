// Makes the firmware table of a notebook that is described by named fields.
#pragma once

#include <cstdint>
#include <vector>

#include "notebook/model/scenario.h"

namespace nuvelta::virtual_notebook {

// The raw table as the firmware port answers it: the 8-byte header, then the
// structures in the order that a real notebook has them. Empty texts become
// string number 0. `system_length` and `fcc_length` are written as they are;
// bytes behind the formatted length of the system structure are left out.
std::vector<uint8_t> BuildSmbiosTable(const SmbiosFields& fields);

// The table of a notebook: as given, or built. Empty when its firmware has none.
std::vector<uint8_t> FirmwareTableOf(const Notebook& notebook);

}  // namespace nuvelta::virtual_notebook
