// Registry values of a story in Wine's registry, below HKEY_LOCAL_MACHINE.
#pragma once

#include <string>

#include "notebook/model/scenario.h"

namespace nuvelta::wine {

// Creates the keys of the path that are not there. Throws as below.
void CreateRegistryKey(const std::string& key);

// Keys are created as needed. Throws std::runtime_error with the error code.
void SetRegistryValue(const std::string& key, const std::string& name,
                      const virtual_notebook::RegistryValue& value);
// Nothing happens when there is no such key or value.
void DeleteRegistryValue(const std::string& key, const std::string& name);

}  // namespace nuvelta::wine
