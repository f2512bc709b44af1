#include "modem/hardware_id.h"

namespace nuvelta {

namespace {

constexpr std::string_view kPciVendor = "VEN_2F1B";
constexpr std::string_view kUsbVendor = "VID_3A5E";
constexpr size_t kMbimHwidLength = 27;
constexpr size_t kPciHwidLength = 33;
constexpr size_t kUsbHwidLength = 21;

bool Contains(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

}  // namespace

std::string_view CutMbimHwid(std::string_view instance_id) {
  return instance_id.substr(0, kMbimHwidLength);
}

bool IsExpectedMbimHwid(std::string_view mbim_hwid) {
  return Contains(kExpectedMbimHwids, mbim_hwid);
}

HwidOwner ClassifyHwid(std::string_view hwid) {
  if (Contains(hwid, kPciVendor)) return HwidOwner::kMakerPci;
  if (Contains(hwid, kUsbVendor)) return HwidOwner::kMakerUsb;
  return HwidOwner::kOther;
}

std::string_view CutAuthHwid(HwidOwner owner, std::string_view hwid) {
  switch (owner) {
    case HwidOwner::kMakerPci:
      return hwid.substr(0, kPciHwidLength);
    case HwidOwner::kMakerUsb:
      return hwid.substr(0, kUsbHwidLength);
    case HwidOwner::kOther:
      break;
  }
  return {};
}

std::string_view FirstText(std::span<const char> bytes) {
  const std::string_view all(bytes.data(), bytes.size());
  return all.substr(0, all.find('\0'));
}

}  // namespace nuvelta
