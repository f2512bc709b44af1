// The set of present devices. Facts: setupapi.h reference pages.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "platform/types.h"

namespace nuvelta::platform {

inline constexpr uint32_t kDigcfPresent = 2;     // DIGCF_PRESENT
inline constexpr uint32_t kDigcfAllClasses = 4;  // DIGCF_ALLCLASSES
inline constexpr uint32_t kSpdrpHardwareId = 1;  // SPDRP_HARDWAREID

// As in SP_DEVINFO_DATA.
struct DeviceInfoData {
  uint32_t cbSize = 32;
  Guid ClassGuid;
  uint32_t DevInst = 0;
  uintptr_t Reserved = 0;
};

class Devices {
 public:
  virtual ~Devices() = default;

  // The devices of every class and enumerator; InvalidHandle on failure.
  virtual DeviceSetHandle SetupDiGetClassDevsW(uint32_t flags) = 0;
  // False, with last error kErrorNoMoreItems past the end.
  virtual bool SetupDiEnumDeviceInfo(DeviceSetHandle set, uint32_t index,
                                     DeviceInfoData& device) = 0;
  // Copies the property's bytes; false when absent or larger than the buffer.
  // The data need not carry a terminator.
  virtual bool SetupDiGetDeviceRegistryPropertyW(DeviceSetHandle set, DeviceInfoData& device,
                                                 uint32_t property,
                                                 std::span<std::byte> buffer) = 0;
  virtual bool SetupDiDestroyDeviceInfoList(DeviceSetHandle set) noexcept = 0;
};

}  // namespace nuvelta::platform
