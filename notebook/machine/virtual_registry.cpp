#include "notebook/machine/virtual_registry.h"

#include <algorithm>
#include <cstring>

#include "notebook/machine/code_page.h"
#include "notebook/model/unicode.h"

namespace nuvelta::virtual_notebook {

namespace {

bool IsText(uint32_t type) { return type == platform::kRegSz || type == 2 || type == 7; }

// A text value as the ANSI functions answer it.
std::vector<uint8_t> Narrowed(const RegistryValue& value) {
  if (!IsText(value.type)) return value.data;
  std::u16string wide(value.data.size() / 2, u'\0');
  for (size_t i = 0; i < wide.size(); ++i) {
    wide[i] = static_cast<char16_t>(value.data[2 * i] | (value.data[2 * i + 1] << 8U));
  }
  const std::string narrow = ToCodePage(wide);
  return {narrow.begin(), narrow.end()};
}

uint32_t CopyOut(const std::vector<uint8_t>& bytes, std::byte* data, uint32_t& size) {
  const uint32_t room = size;
  size = static_cast<uint32_t>(bytes.size());
  if (data == nullptr) return platform::kErrorSuccess;
  if (room < bytes.size()) return platform::kErrorMoreData;
  if (!bytes.empty()) std::memcpy(data, bytes.data(), bytes.size());
  return platform::kErrorSuccess;
}

}  // namespace

VirtualRegistry::VirtualRegistry(Context& context, const RegistryContent& content)
    : m_context(context) {
  for (const auto& [path, values] : content) {
    CreateKey(path);
    for (const auto& [name, value] : values) Set(path, name, value);
  }
}

void VirtualRegistry::CreateFolded(std::string_view path) {
  for (size_t end = 0, begin = 0; end != std::string_view::npos; begin = end + 1) {
    end = path.find('\\', begin);
    const std::string_view prefix = path.substr(0, end);
    const size_t last = prefix.rfind('\\');
    const auto name = last == std::string_view::npos ? prefix : prefix.substr(last + 1);
    m_keys.try_emplace(Folded(prefix), Key{std::string(name), {}});
  }
}

void VirtualRegistry::CreateKey(const std::string& path) {
  const std::lock_guard lock(m_mutex);
  CreateFolded(path);
}

void VirtualRegistry::Set(const std::string& path, const std::string& name, RegistryValue value) {
  const std::lock_guard lock(m_mutex);
  CreateFolded(path);
  m_keys[Folded(path)].values[Folded(name)] = std::move(value);
}

void VirtualRegistry::SetText(const std::string& path, const std::string& name,
                              std::string_view text) {
  Set(path, name, {.type = platform::kRegSz, .data = Utf16Bytes(text, 1)});
}

void VirtualRegistry::Delete(const std::string& path, const std::string& name) {
  const std::lock_guard lock(m_mutex);
  const auto key = m_keys.find(Folded(path));
  if (key != m_keys.end()) key->second.values.erase(Folded(name));
}

uint32_t VirtualRegistry::OpenFolded(const std::string& path, platform::KeyHandle& key) {
  const std::lock_guard lock(m_mutex);
  if (!m_keys.contains(path)) return platform::kErrorFileNotFound;
  m_open.emplace(m_next_handle, path);
  key = static_cast<platform::KeyHandle>(m_next_handle++);
  return platform::kErrorSuccess;
}

platform::KeyHandle VirtualRegistry::Open(const std::string& path) {
  platform::KeyHandle key{};
  OpenFolded(Folded(path), key);
  return key;
}

std::string VirtualRegistry::PathOf(platform::KeyHandle key) const {
  const auto found = m_open.find(static_cast<uintptr_t>(key));
  return found == m_open.end() ? std::string() : found->second;
}

const RegistryValue* VirtualRegistry::Find(platform::KeyHandle key,
                                           const std::string& folded_name) const {
  const auto found = m_keys.find(PathOf(key));
  if (found == m_keys.end()) return nullptr;
  const auto value = found->second.values.find(folded_name);
  return value == found->second.values.end() ? nullptr : &value->second;
}

uint32_t VirtualRegistry::RegOpenKeyExW(std::u16string_view subkey, uint32_t /*access*/,
                                        platform::KeyHandle& key) {
  if (const auto error = m_context.Error("RegOpenKeyExW")) return *error;
  return OpenFolded(Folded(Utf8(subkey)), key);
}

uint32_t VirtualRegistry::RegOpenKeyExA(platform::KeyHandle parent, std::string_view subkey,
                                        uint32_t /*access*/, platform::KeyHandle& key) {
  if (const auto error = m_context.Error("RegOpenKeyExA")) return *error;
  std::string path;
  {
    const std::lock_guard lock(m_mutex);
    path = PathOf(parent);
  }
  if (path.empty()) return platform::kErrorInvalidHandle;
  return OpenFolded(path + "\\" + Folded(Utf8(FromCodePage(subkey))), key);
}

uint32_t VirtualRegistry::RegQueryValueExW(platform::KeyHandle key, std::u16string_view value,
                                           uint32_t& type, std::byte* data, uint32_t& size) {
  if (const auto error = m_context.Error("RegQueryValueExW")) return *error;
  const std::lock_guard lock(m_mutex);
  const RegistryValue* found = Find(key, Folded(Utf8(value)));
  if (found == nullptr) return platform::kErrorFileNotFound;
  type = found->type;
  return CopyOut(found->data, data, size);
}

uint32_t VirtualRegistry::RegQueryValueExA(platform::KeyHandle key, std::string_view value,
                                           std::byte* data, uint32_t& size) {
  if (const auto error = m_context.Error("RegQueryValueExA")) return *error;
  const std::lock_guard lock(m_mutex);
  const RegistryValue* found = Find(key, Folded(Utf8(FromCodePage(value))));
  if (found == nullptr) return platform::kErrorFileNotFound;
  return CopyOut(Narrowed(*found), data, size);
}

uint32_t VirtualRegistry::RegEnumKeyExA(platform::KeyHandle key, uint32_t index,
                                        std::span<char> name) {
  if (const auto error = m_context.Error("RegEnumKeyExA")) return *error;
  const std::lock_guard lock(m_mutex);
  const std::string path = PathOf(key);
  if (path.empty()) return platform::kErrorInvalidHandle;
  const std::string prefix = path + "\\";
  uint32_t seen = 0;
  for (auto at = m_keys.lower_bound(prefix); at != m_keys.end(); ++at) {
    if (!at->first.starts_with(prefix)) break;
    if (at->first.find('\\', prefix.size()) != std::string::npos || seen++ != index) continue;
    const std::string narrow = ToCodePage(Utf16(at->second.name));
    if (narrow.size() >= name.size()) return platform::kErrorMoreData;
    std::ranges::copy(narrow, name.begin());
    name[narrow.size()] = '\0';
    return platform::kErrorSuccess;
  }
  return platform::kErrorNoMoreItems;
}

uint32_t VirtualRegistry::RegCloseKey(platform::KeyHandle key) noexcept {
  const std::lock_guard lock(m_mutex);
  return m_open.erase(static_cast<uintptr_t>(key)) != 0 ? platform::kErrorSuccess
                                                        : platform::kErrorInvalidHandle;
}

void VirtualRegistry::EndProcess() {
  const std::lock_guard lock(m_mutex);
  m_open.clear();
}

size_t VirtualRegistry::OpenHandles() const {
  const std::lock_guard lock(m_mutex);
  return m_open.size();
}

}  // namespace nuvelta::virtual_notebook
