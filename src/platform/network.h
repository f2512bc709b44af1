// Network adapters and the network-adapter class key. Facts: iphlpapi.h,
// iptypes.h and setupapi.h reference pages.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/types.h"

namespace nuvelta::platform {

inline constexpr uint32_t kAfUnspec = 0;  // AF_UNSPEC
inline constexpr uint32_t kAfInet = 2;    // AF_INET
// [fixed] the platform's own value of that name is 4.
inline constexpr uint32_t kGaaFlagSkipMulticast = 2;
inline constexpr uint32_t kIfTypeWwanPp = 243;  // IF_TYPE_WWANPP
inline constexpr uint32_t kDiocrInstaller = 1;  // DIOCR_INSTALLER

// {4D36E972-E325-11CE-BFC1-08002BE10318}, GUID_DEVCLASS_NET
inline constexpr Guid kGuidDevClassNet{
    0x4D36E972, 0xE325, 0x11CE, {0xBF, 0xC1, 0x08, 0x00, 0x2B, 0xE1, 0x03, 0x18}};

// One entry of the list that GetAdaptersAddresses leaves in its buffer. The
// texts live in that buffer, are NUL-terminated and may be null.
struct AdapterRecord {
  const void* Next = nullptr;
  const char* AdapterName = nullptr;
  const char16_t* Description = nullptr;
  const char16_t* FriendlyName = nullptr;
  uint32_t IfType = 0;
  uint32_t OperStatus = 0;
};

class NetworkAdapters {
 public:
  virtual ~NetworkAdapters() = default;

  // Fills `buffer` with the adapter list. `size` is the buffer's size on entry
  // and the needed size on return. Returns a Win32 status code:
  // kErrorBufferOverflow when the buffer is null or too small.
  virtual uint32_t GetAdaptersAddresses(uint32_t family, uint32_t flags, void* buffer,
                                        uint32_t& size) = 0;
  // Reads the record at `record`: the start of a filled buffer, or a `Next`.
  virtual AdapterRecord ReadAdapter(const void* record) = 0;

  // Opens the class key of `device_class` on the local machine; InvalidHandle on
  // failure. Close it with Registry::RegCloseKey.
  virtual KeyHandle SetupDiOpenClassRegKeyExW(const Guid& device_class, uint32_t access,
                                              uint32_t flags) = 0;
};

}  // namespace nuvelta::platform
