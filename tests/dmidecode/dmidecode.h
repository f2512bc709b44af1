// dmidecode as a second reader of firmware tables.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace nuvelta::test {

// What dmidecode prints of one structure.
struct DmiBlock {
  int type = 0;
  int length = 0;
  bool cut = false;                           // it does not end inside the table
  std::map<std::string, std::string> fields;  // by the name printed, as printed
  std::map<std::string, std::vector<std::string>> lists;
};

struct DmiOutput {
  std::vector<DmiBlock> blocks;
  bool whole = true;     // the structures fill the table exactly
  bool stopped = false;  // at a structure shorter than its header

  // The first of a type and at least that length.
  const DmiBlock* First(int type, int least) const;
};

bool HasDmidecode();

// Runs dmidecode on a table as the firmware port delivers it, with its 8-byte
// header, wrapped in an entry point of the table's version. Tables longer than
// such an entry point can name are cut. Throws when dmidecode cannot be run.
DmiOutput RunDmidecode(std::span<const uint8_t> table);

}  // namespace nuvelta::test
