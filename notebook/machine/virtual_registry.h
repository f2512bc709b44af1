// The virtual notebook's registry below HKEY_LOCAL_MACHINE.
#pragma once

#include <map>
#include <mutex>
#include <string>
#include <string_view>

#include "notebook/machine/context.h"
#include "notebook/model/scenario.h"
#include "platform/registry.h"

namespace nuvelta::virtual_notebook {

class VirtualRegistry final : public platform::Registry {
 public:
  VirtualRegistry(Context& context, const RegistryContent& content);

  uint32_t RegOpenKeyExW(std::u16string_view subkey, uint32_t access,
                         platform::KeyHandle& key) override;
  uint32_t RegOpenKeyExA(platform::KeyHandle parent, std::string_view subkey, uint32_t access,
                         platform::KeyHandle& key) override;
  uint32_t RegQueryValueExW(platform::KeyHandle key, std::u16string_view value, uint32_t& type,
                            std::byte* data, uint32_t& size) override;
  uint32_t RegQueryValueExA(platform::KeyHandle key, std::string_view value, std::byte* data,
                            uint32_t& size) override;
  uint32_t RegEnumKeyExA(platform::KeyHandle key, uint32_t index, std::span<char> name) override;
  uint32_t RegCloseKey(platform::KeyHandle key) noexcept override;

  // For the story: names are UTF-8, paths are created as needed.
  void CreateKey(const std::string& path);
  void Set(const std::string& path, const std::string& name, RegistryValue value);
  void SetText(const std::string& path, const std::string& name, std::string_view text);
  void Delete(const std::string& path, const std::string& name);

  // Opens a key for another port; the null handle when it does not exist.
  platform::KeyHandle Open(const std::string& path);
  void EndProcess();
  size_t OpenHandles() const;

 private:
  struct Key {
    std::string name;  // the last element of its path, in its own letter case
    std::map<std::string, RegistryValue> values;  // by folded name
  };

  uint32_t OpenFolded(const std::string& path, platform::KeyHandle& key);
  // Empty when the handle is not open.
  std::string PathOf(platform::KeyHandle key) const;
  const RegistryValue* Find(platform::KeyHandle key, const std::string& folded_name) const;
  void CreateFolded(std::string_view path);

  Context& m_context;
  mutable std::mutex m_mutex;
  std::map<std::string, Key> m_keys;  // by folded path
  std::map<uintptr_t, std::string> m_open;
  uintptr_t m_next_handle = 0x1000;
};

}  // namespace nuvelta::virtual_notebook
