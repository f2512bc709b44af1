#include "platform/registry.h"
#include "platform/windows/win32.h"
#include "platform/windows/windows_platform.h"

namespace nuvelta::windows {

namespace {

using platform::KeyHandle;

class Win32Registry final : public platform::Registry {
 public:
  uint32_t RegOpenKeyExW(std::u16string_view subkey, uint32_t access, KeyHandle& key) override {
    HKEY opened = nullptr;
    const LSTATUS status =
        ::RegOpenKeyExW(HKEY_LOCAL_MACHINE, Terminated(subkey).c_str(), 0, access, &opened);
    if (status == ERROR_SUCCESS) key = FromNative<KeyHandle>(opened);
    return static_cast<uint32_t>(status);
  }

  uint32_t RegOpenKeyExA(KeyHandle parent, std::string_view subkey, uint32_t access,
                         KeyHandle& key) override {
    HKEY opened = nullptr;
    const LSTATUS status =
        ::RegOpenKeyExA(ToNative<HKEY>(parent), std::string(subkey).c_str(), 0, access, &opened);
    if (status == ERROR_SUCCESS) key = FromNative<KeyHandle>(opened);
    return static_cast<uint32_t>(status);
  }

  uint32_t RegQueryValueExW(KeyHandle key, std::u16string_view value, uint32_t& type,
                            std::byte* data, uint32_t& size) override {
    DWORD value_type = type;
    DWORD bytes = size;
    const LSTATUS status =
        ::RegQueryValueExW(ToNative<HKEY>(key), Terminated(value).c_str(), nullptr, &value_type,
                           reinterpret_cast<BYTE*>(data), &bytes);
    type = value_type;
    size = bytes;
    return static_cast<uint32_t>(status);
  }

  uint32_t RegQueryValueExA(KeyHandle key, std::string_view value, std::byte* data,
                            uint32_t& size) override {
    DWORD bytes = size;
    const LSTATUS status =
        ::RegQueryValueExA(ToNative<HKEY>(key), std::string(value).c_str(), nullptr, nullptr,
                           reinterpret_cast<BYTE*>(data), &bytes);
    size = bytes;
    return static_cast<uint32_t>(status);
  }

  uint32_t RegEnumKeyExA(KeyHandle key, uint32_t index, std::span<char> name) override {
    auto length = static_cast<DWORD>(name.size());
    return static_cast<uint32_t>(::RegEnumKeyExA(ToNative<HKEY>(key), index, name.data(), &length,
                                                 nullptr, nullptr, nullptr, nullptr));
  }

  uint32_t RegCloseKey(KeyHandle key) noexcept override {
    return static_cast<uint32_t>(::RegCloseKey(ToNative<HKEY>(key)));
  }
};

}  // namespace

platform::Registry& WindowsRegistry() { return Immortal<Win32Registry>(); }

}  // namespace nuvelta::windows
