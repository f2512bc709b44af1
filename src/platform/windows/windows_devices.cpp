#include "platform/devices.h"
#include "platform/windows/win32.h"
#include "platform/windows/windows_platform.h"

#include <setupapi.h>

namespace nuvelta::windows {

namespace {

static_assert(sizeof(SP_DEVINFO_DATA) == sizeof(platform::DeviceInfoData));

class Win32Devices final : public platform::Devices {
 public:
  platform::DeviceSetHandle SetupDiGetClassDevsW(uint32_t flags) override {
    return FromNative<platform::DeviceSetHandle>(
        ::SetupDiGetClassDevsW(nullptr, nullptr, nullptr, flags));
  }

  bool SetupDiEnumDeviceInfo(platform::DeviceSetHandle set, uint32_t index,
                             platform::DeviceInfoData& device) override {
    auto data = std::bit_cast<SP_DEVINFO_DATA>(device);
    if (::SetupDiEnumDeviceInfo(ToNative<HDEVINFO>(set), index, &data) == FALSE) return false;
    device = std::bit_cast<platform::DeviceInfoData>(data);
    return true;
  }

  bool SetupDiGetDeviceRegistryPropertyW(platform::DeviceSetHandle set,
                                         platform::DeviceInfoData& device, uint32_t property,
                                         std::span<std::byte> buffer) override {
    auto data = std::bit_cast<SP_DEVINFO_DATA>(device);
    return ::SetupDiGetDeviceRegistryPropertyW(ToNative<HDEVINFO>(set), &data, property, nullptr,
                                               reinterpret_cast<BYTE*>(buffer.data()),
                                               static_cast<DWORD>(buffer.size()), nullptr) != FALSE;
  }

  bool SetupDiDestroyDeviceInfoList(platform::DeviceSetHandle set) noexcept override {
    return ::SetupDiDestroyDeviceInfoList(ToNative<HDEVINFO>(set)) != FALSE;
  }
};

}  // namespace

platform::Devices& WindowsDevices() { return Immortal<Win32Devices>(); }

}  // namespace nuvelta::windows
