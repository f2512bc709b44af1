// The registry below HKEY_LOCAL_MACHINE. Facts: winreg.h reference pages.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "platform/types.h"

namespace nuvelta::platform {

inline constexpr uint32_t kKeyRead = 0x20019;  // KEY_READ
inline constexpr uint32_t kRegSz = 1;          // REG_SZ
inline constexpr uint32_t kRegDword = 4;       // REG_DWORD

class Registry {
 public:
  virtual ~Registry() = default;

  // Each function returns a Win32 status code (0 on success), as the registry
  // functions do; the thread's last error is not part of their answer.

  // Opens `subkey` (backslash-separated, letter case ignored) of
  // HKEY_LOCAL_MACHINE; `key` is set on success only.
  virtual uint32_t RegOpenKeyExW(std::u16string_view subkey, uint32_t access, KeyHandle& key) = 0;
  // The same below an open key, the name in the ANSI code page.
  virtual uint32_t RegOpenKeyExA(KeyHandle parent, std::string_view subkey, uint32_t access,
                                 KeyHandle& key) = 0;
  // Reads a value. `size` is the buffer's size in bytes on entry and the value's
  // on return; a null `data` asks for type and size only; a buffer too small
  // answers kErrorMoreData. The data need not carry a terminator.
  virtual uint32_t RegQueryValueExW(KeyHandle key, std::u16string_view value, uint32_t& type,
                                    std::byte* data, uint32_t& size) = 0;
  // The same with text values converted to the ANSI code page.
  virtual uint32_t RegQueryValueExA(KeyHandle key, std::string_view value, std::byte* data,
                                    uint32_t& size) = 0;
  // Writes the name of subkey `index`, NUL-terminated, into `name`;
  // kErrorNoMoreItems past the last one.
  virtual uint32_t RegEnumKeyExA(KeyHandle key, uint32_t index, std::span<char> name) = 0;
  virtual uint32_t RegCloseKey(KeyHandle key) noexcept = 0;
};

}  // namespace nuvelta::platform
