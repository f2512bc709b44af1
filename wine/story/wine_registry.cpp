#include "wine/story/wine_registry.h"

#include <windows.h>

#include <stdexcept>

#include "wine/story/wide.h"

namespace nuvelta::wine {

void CreateRegistryKey(const std::string& key) {
  HKEY handle = nullptr;
  const LSTATUS error = RegCreateKeyExW(HKEY_LOCAL_MACHINE, Wide(key).c_str(), 0, nullptr, 0,
                                        KEY_READ, nullptr, &handle, nullptr);
  if (error != ERROR_SUCCESS) {
    throw std::runtime_error("HKLM\\" + key + " cannot be created: error " + std::to_string(error));
  }
  RegCloseKey(handle);
}

void SetRegistryValue(const std::string& key, const std::string& name,
                      const virtual_notebook::RegistryValue& value) {
  CreateRegistryKey(key);
  const LSTATUS error =
      RegSetKeyValueW(HKEY_LOCAL_MACHINE, Wide(key).c_str(), Wide(name).c_str(), value.type,
                      value.data.data(), static_cast<DWORD>(value.data.size()));
  if (error != ERROR_SUCCESS) {
    throw std::runtime_error("HKLM\\" + key + ": \"" + name + "\" cannot be written: error " +
                             std::to_string(error));
  }
}

void DeleteRegistryValue(const std::string& key, const std::string& name) {
  RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, Wide(key).c_str(), Wide(name).c_str());
}

}  // namespace nuvelta::wine
