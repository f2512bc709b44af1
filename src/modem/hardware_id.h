// The rules about hardware ids: narrow text in the Windows device-id form.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace nuvelta {

// The MBIM interfaces of the modem family, each ended by ";".
inline constexpr const char* kExpectedMbimHwids =
    "USB\\VID_3A5E&PID_4A10&MI_00;USB\\VID_3A5E&PID_4A11&MI_00;"
    "USB\\VID_3A5E&PID_0A31&MI_00;USB\\VID_3A5E&PID_0A32&MI_00;";

// The first 27 characters of a device instance id: what follows the interface
// number is cut off. A shorter id is kept whole.
std::string_view CutMbimHwid(std::string_view instance_id);

// True when the id occurs anywhere in kExpectedMbimHwids. [fixed] Letter case counts,
// and a part of an entry is enough.
bool IsExpectedMbimHwid(std::string_view mbim_hwid);

// Whose device a hardware id names. Letter case counts.
enum class HwidOwner : uint8_t {
  kOther,
  kMakerPci,  // carries the maker's PCI vendor id; this one is asked first
  kMakerUsb   // carries the maker's USB vendor id
};
HwidOwner ClassifyHwid(std::string_view hwid);

// The part by which the platform check knows the device: 33 characters of a PCI
// id, 21 of a USB id, nothing of any other.
std::string_view CutAuthHwid(HwidOwner owner, std::string_view hwid);

// The text at the start of `bytes`, which ends at the first NUL or with them.
std::string_view FirstText(std::span<const char> bytes);

}  // namespace nuvelta
