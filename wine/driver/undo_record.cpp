#include "wine/driver/undo_record.h"

#include <fstream>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "wine/driver/win32.h"
#include "wine/story/wine_registry.h"

namespace nuvelta::wine {

namespace {

using Json = nlohmann::json;
using virtual_notebook::RegistryValue;

bool KeyExists(const std::string& key) {
  HKEY handle = nullptr;
  if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, Wide(key).c_str(), 0, KEY_READ, &handle) != ERROR_SUCCESS) {
    return false;
  }
  RegCloseKey(handle);
  return true;
}

// The topmost key of the path that does not exist; none when all do.
std::optional<std::string> FirstMissing(const std::string& key) {
  for (size_t end = 0; end != std::string::npos;) {
    end = key.find('\\', end == 0 ? 0 : end + 1);
    if (!KeyExists(key.substr(0, end))) return key.substr(0, end);
  }
  return {};
}

std::optional<RegistryValue> ReadValue(const std::string& key, const std::string& name) {
  HKEY handle = nullptr;
  if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, Wide(key).c_str(), 0, KEY_READ, &handle) != ERROR_SUCCESS) {
    return {};
  }
  const std::wstring wide = Wide(name);
  DWORD type = 0;
  DWORD size = 0;
  RegistryValue value;
  LSTATUS error = RegQueryValueExW(handle, wide.c_str(), nullptr, &type, nullptr, &size);
  if (error == ERROR_SUCCESS) {
    value.data.resize(size);
    error = RegQueryValueExW(handle, wide.c_str(), nullptr, &type, value.data.data(), &size);
  }
  RegCloseKey(handle);
  if (error != ERROR_SUCCESS) return {};
  value.type = type;
  return value;
}

}  // namespace

UndoRecord RecordRegistry(const std::string& service_key, const RegistryPlaces& places) {
  UndoRecord record{.service_key = service_key, .values = {}, .created_keys = {}};
  for (const auto& [key, name] : places) {
    if (const auto missing = FirstMissing(key)) {
      record.created_keys.push_back(*missing);
    } else if (!name.empty()) {
      record.values.push_back({.key = key, .name = name, .before = ReadValue(key, name)});
    }
  }
  return record;
}

void RestoreRegistry(const UndoRecord& record) {
  for (const UndoRecord::Value& value : record.values) {
    if (value.before) {
      SetRegistryValue(value.key, value.name, *value.before);
    } else {
      DeleteRegistryValue(value.key, value.name);
    }
  }
  for (const std::string& key : record.created_keys) {
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, Wide(key).c_str());
  }
}

void Save(const UndoRecord& record, const std::filesystem::path& file) {
  Json values = Json::array();
  for (const UndoRecord::Value& value : record.values) {
    Json item{{"key", value.key}, {"name", value.name}};
    if (value.before) {
      item["type"] = value.before->type;
      item["data"] = value.before->data;
    }
    values.push_back(std::move(item));
  }
  const Json json{
      {"service", record.service_key}, {"values", values}, {"created_keys", record.created_keys}};
  std::ofstream stream(file, std::ios::binary | std::ios::trunc);
  stream << json.dump() << "\n" << std::flush;
  if (!stream) throw std::runtime_error(file.string() + " cannot be written");
}

std::optional<UndoRecord> LoadUndoRecord(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  const Json json = Json::parse(stream, nullptr, false);
  if (!json.is_object()) return {};
  UndoRecord record;
  json.at("service").get_to(record.service_key);
  json.at("created_keys").get_to(record.created_keys);
  for (const Json& item : json.at("values")) {
    UndoRecord::Value value{.key = item.at("key"), .name = item.at("name"), .before = {}};
    if (item.contains("type")) value.before = RegistryValue{item.at("type"), item.at("data")};
    record.values.push_back(std::move(value));
  }
  return record;
}

}  // namespace nuvelta::wine
