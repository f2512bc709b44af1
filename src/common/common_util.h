// Static utilities that several subsystems share.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace nuvelta {

class CommonUtil {
 public:
  // Reads a REG_DWORD below HKEY_LOCAL_MACHINE; -1 when it cannot be read or has
  // another type. Deliberately only the lowest byte of the value counts, so a
  // stored 256 reads as 0. The first argument is not used.
  static int32_t ReadDWORDRegValue(int unused, std::u16string_view subkey,
                                   std::u16string_view value);

  // True when the service log is to be written ("IsMAServiceLog" is 1 or absent).
  static bool IsEnableServiceLog();

  // True when platform verification is switched off ("SupportVerifyPlatform" is
  // 0 or "IsDisableVerify" is 1).
  static bool IsDisableVerify();

  // Finds the service that runs in this process: its key name, NUL-terminated
  // and cut to `name`, and its process id. Returns 1 when found, 0 otherwise.
  static uint32_t GetServiceName(std::span<char> name, uint32_t& processId);

  // Launches an elevated command interpreter that kills this process and starts
  // the service again. Returns 1 when it was launched, 0 otherwise.
  static uint32_t RestartService();
};

}  // namespace nuvelta
