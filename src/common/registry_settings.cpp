#include <cstddef>

#include "common/common_util.h"
#include "common/func_trace.h"
#include "common/logger.h"
#include "common/scope_exit.h"
#include "platform/memory.h"
#include "platform/platform.h"
#include "platform/registry.h"
#include "platform/threads.h"

namespace nuvelta {

namespace {

constexpr std::u16string_view kLogsKey = u"SOFTWARE\\Nuvelta Wireless Inc\\Logs";
constexpr std::u16string_view kServiceKey = u"SOFTWARE\\Nuvelta Wireless Inc\\MAService";
constexpr int32_t kNotRead = -1;
// [fixed] without the class, unlike the trace scope's name; every line under it at error
// level, the success line included.
constexpr const char* kReaderName = "ReadDWORDRegValue";

// [fixed] the thread's last error, not the status that the call returned.
int LastError() { return static_cast<int>(platform::Os().threads->GetLastError()); }

int32_t QueryFailed() {
  LogError(kReaderName, "RegQueryValueEx FAIL ,ERROR code = %d", LastError());
  return kNotRead;
}

// The value may have changed since its type and size were asked.
int32_t ReadFirstByte(platform::KeyHandle key, std::u16string_view value, uint32_t size) {
  platform::Memory& memory = *platform::Os().memory;
  auto* buffer = static_cast<std::byte*>(memory.HeapAlloc(size));
  if (buffer == nullptr) return kNotRead;
  const ScopeExit free([&] { memory.HeapFree(buffer); });
  uint32_t type = platform::kRegDword;
  if (platform::Os().registry->RegQueryValueExW(key, value, type, buffer, size) !=
          platform::kErrorSuccess ||
      type != platform::kRegDword || size == 0) {
    return QueryFailed();
  }
  const auto ret = static_cast<int32_t>(buffer[0]);
  LogError(kReaderName, "RegQueryValueEx success, ret = %d", ret);
  return ret;
}

bool IsOne(const char* name, int32_t value) {
  if (value == 1) LogInfo(name, "find reg value is 1,return true");
  return value == 1;
}

}  // namespace

int32_t CommonUtil::ReadDWORDRegValue(int /*unused*/, std::u16string_view subkey,
                                      std::u16string_view value) {
  const CFuncTrace trace("CommonUtil::ReadDWORDRegValue");
  platform::Registry& registry = *platform::Os().registry;
  platform::KeyHandle key{};
  if (registry.RegOpenKeyExW(subkey, platform::kKeyRead, key) != platform::kErrorSuccess) {
    LogError(kReaderName, "RegOpenKeyEx FAIL ,ERROR code = %d", LastError());
    return kNotRead;
  }
  const ScopeExit close([&] { registry.RegCloseKey(key); });
  uint32_t type = platform::kRegDword;
  uint32_t size = 0;
  if (registry.RegQueryValueExW(key, value, type, nullptr, size) != platform::kErrorSuccess) {
    return QueryFailed();
  }
  if (type == platform::kRegDword && size != 0) return ReadFirstByte(key, value, size);
  LogError(kReaderName,
           "RegQueryValueEx success,but dwType ==  REG_DWORD %d ;cbData = %d,ERROR code = %d",
           type == platform::kRegDword ? 1 : 0, static_cast<int>(size), LastError());
  return kNotRead;
}

bool CommonUtil::IsEnableServiceLog() {
  constexpr const char* kName = "CommonUtil::IsEnableServiceLog";
  const CFuncTrace trace(kName);
  const int32_t value = ReadDWORDRegValue(0, kLogsKey, u"IsMAServiceLog");
  if (value == kNotRead) {
    LogInfo(kName, "NOT find reg,return true");
    return true;
  }
  return IsOne(kName, value);
}

// [fixed] the two values are of opposite sense; no trace scope, but an exit line before
// true.
bool CommonUtil::IsDisableVerify() {
  constexpr const char* kName = "CommonUtil::IsDisableVerify";
  const int32_t support = ReadDWORDRegValue(0, kServiceKey, u"SupportVerifyPlatform");
  if (support == kNotRead) {
    LogInfo(kName, "NOT find reg REG_KEY_NAME_DISABLE_VERIFY_OLD ");
  } else if (support == 0) {
    LogInfo(kName, "find reg value is 0,return true");
    CFuncTrace::WriteExit(kName);
    return true;
  }
  const int32_t disable = ReadDWORDRegValue(0, kServiceKey, u"IsDisableVerify");
  if (disable == kNotRead) {
    LogInfo(kName, "NOT find reg REG_KEY_NAME_DISABLE_VERIFY ");
    return false;
  }
  if (!IsOne(kName, disable)) return false;
  CFuncTrace::WriteExit(kName);
  return true;
}

}  // namespace nuvelta
