// What a story changes in the prefix and how it was before. It is on the disk
// before the first change, so that an interrupted run can be undone by the next.
#pragma once

#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "notebook/model/scenario.h"

namespace nuvelta::wine {

struct UndoRecord {
  struct Value {
    std::string key;
    std::string name;
    std::optional<virtual_notebook::RegistryValue> before;  // none: it was not there
  };
  std::string service_key;
  std::vector<Value> values;
  std::vector<std::string> created_keys;  // with all below them
};

// Key and value name, or a key alone with an empty name.
using RegistryPlaces = std::set<std::pair<std::string, std::string>>;

// Notes how the places are now.
UndoRecord RecordRegistry(const std::string& service_key, const RegistryPlaces& places);
// Brings the registry back to the record.
void RestoreRegistry(const UndoRecord& record);

// Throws std::runtime_error when the file cannot be written.
void Save(const UndoRecord& record, const std::filesystem::path& file);
// None when there is no such file, or it was not written to its end.
std::optional<UndoRecord> LoadUndoRecord(const std::filesystem::path& file);

}  // namespace nuvelta::wine
