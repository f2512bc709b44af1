#include <algorithm>
#include <array>
#include <string>

#include "common/func_trace.h"
#include "common/logger.h"
#include "common/scope_exit.h"
#include "common/text_util.h"
#include "modem/device_helper.h"
#include "modem/hardware_id.h"
#include "platform/devices.h"
#include "platform/platform.h"
#include "platform/threads.h"

namespace nuvelta {

namespace {

constexpr const char* kGetAuthDeviceHwid = "CDeviceHelper::GetAuthDeviceHwid";
constexpr size_t kPropertySize = 1024;
// [fixed] the first device is logged as number 2.
constexpr uint32_t kFirstLoggedNumber = 2;

using PropertyBuffer = std::array<char16_t, kPropertySize / sizeof(char16_t)>;

// The first string of a multi-string, in the ANSI code page.
std::string FirstString(const PropertyBuffer& property) {
  const std::u16string_view all(property.data(), property.size());
  return ToAnsi(all.substr(0, all.find(u'\0')));
}

void KeepHwid(std::string_view kept, std::span<char, 128> hwid) {
  std::ranges::fill(hwid, '\0');
  std::ranges::copy(kept, hwid.begin());
}

// True when a device of the maker was found. [fixed] The first PCI device ends the search;
// a later USB device replaces an earlier one.
bool SearchDevices(platform::DeviceSetHandle set, std::span<char, 128> hwid) {
  platform::Devices& devices = *platform::Os().devices;
  bool found = false;
  for (uint32_t index = 0;; ++index) {
    platform::DeviceInfoData device;
    if (!devices.SetupDiEnumDeviceInfo(set, index, device)) {
      const int error = static_cast<int>(platform::Os().threads->GetLastError());
      LogInfo(kGetAuthDeviceHwid, "SetupDiEnumDeviceInfo return : 0 ,error code: %d ", error);
      return found;
    }
    // Zero for each device, so that an id without terminator borrows no tail.
    PropertyBuffer property{};
    if (!devices.SetupDiGetDeviceRegistryPropertyW(set, device, platform::kSpdrpHardwareId,
                                                   std::as_writable_bytes(std::span(property)))) {
      continue;
    }
    const std::string text = FirstString(property);
    LogInfo(kGetAuthDeviceHwid, "GET device Hwid[%d] : %s ",
            static_cast<int>(index + kFirstLoggedNumber), text.c_str());
    const HwidOwner owner = ClassifyHwid(text);
    if (owner == HwidOwner::kOther) continue;
    KeepHwid(CutAuthHwid(owner, text), hwid);
    found = true;
    if (owner == HwidOwner::kMakerPci) return found;
  }
}

}  // namespace

bool CDeviceHelper::GetAuthDeviceHwid(std::span<char, 128> hwid) {
  const CFuncTrace trace(kGetAuthDeviceHwid);
  platform::Devices& devices = *platform::Os().devices;
  const platform::DeviceSetHandle set =
      devices.SetupDiGetClassDevsW(platform::kDigcfPresent | platform::kDigcfAllClasses);
  if (set == platform::InvalidHandle<platform::DeviceSetHandle>()) {
    const int error = static_cast<int>(platform::Os().threads->GetLastError());
    // The comma is the full-width one of code page 936.
    LogInfo(kGetAuthDeviceHwid,
            "SetupDiGetClassDevs failed return INVALID_HANDLE_VALUE ,error code %d "
            "\xA3\xAC"
            "exit false",
            error);
    return false;
  }
  bool found = false;
  {
    const ScopeExit destroy([&] { devices.SetupDiDestroyDeviceInfoList(set); });
    found = SearchDevices(set, hwid);
  }
  if (!found) {
    LogInfo(kGetAuthDeviceHwid, "do not find auth hwid ,return false");
    return false;
  }
  LogInfo(kGetAuthDeviceHwid, "find auth hwid : %s,return true", hwid.data());
  return true;
}

}  // namespace nuvelta
