// The settings of the service in the registry. Defined in registry_settings.cpp.
#pragma once

#include <cstdint>
#include <string_view>

namespace nuvelta::CommonUtil {

// Reads a REG_DWORD below HKEY_LOCAL_MACHINE; -1 when it cannot be read or has
// another type. [fixed] Only the lowest byte of the value counts, so a stored 256
// reads as 0. The first argument is not used.
int32_t ReadDWORDRegValue(int unused, std::u16string_view subkey, std::u16string_view value);

// True when the service log is to be written ("IsMAServiceLog" is 1 or absent).
bool IsEnableServiceLog();

// True when platform verification is switched off ("SupportVerifyPlatform" is
// 0 or "IsDisableVerify" is 1).
bool IsDisableVerify();

}  // namespace nuvelta::CommonUtil
