// What the hardware shows of the modem before any mobile-broadband call.
#pragma once

#include <cstdint>
#include <span>

namespace nuvelta {

class CDeviceHelper {
 public:
  // Is the maker's modem present as an MBIM network adapter? Only the first
  // mobile-broadband adapter is examined. Returns 1 and sets `found` when it is;
  // returns 0 and leaves `found` alone otherwise: clear it beforehand.
  // [fixed] The spelling "Devcie", here and in the log. Defined in device_presence.cpp.
  static uint32_t IsNuveltaMBIMDevcieExist(bool& found);

  // Writes the hardware id of the maker's device, NUL-terminated, into `hwid`:
  // the first PCI device wins, else the last USB device. False when there is
  // none, `hwid` untouched. Defined in device_hwid.cpp.
  static bool GetAuthDeviceHwid(std::span<char, 128> hwid);
};

}  // namespace nuvelta
