// The device service through which the modem family takes its commands.
#pragma once

#include "platform/types.h"

namespace nuvelta::platform {

inline constexpr Guid kVendorService{
    0x11223344, 0x5566, 0x7788, {0x99, 0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0xFF, 0x11}};
inline constexpr const char* kVendorServiceText = "{11223344-5566-7788-99AA-BBCCDDEEFF11}";

}  // namespace nuvelta::platform
