// Firmware tables. Facts: sysinfoapi.h reference pages.
#pragma once

#include <cstddef>
#include <cstdint>

namespace nuvelta::platform {

inline constexpr uint32_t kFirmwareProviderRsmb = 0x52534D42;  // 'RSMB', raw SMBIOS

class Firmware {
 public:
  virtual ~Firmware() = default;

  // Copies the table into `buffer` and returns its size in bytes. When `size` is
  // too small nothing is copied and the needed size is returned; 0 on failure.
  virtual uint32_t GetSystemFirmwareTable(uint32_t provider, uint32_t table, std::byte* buffer,
                                          uint32_t size) = 0;
};

}  // namespace nuvelta::platform
