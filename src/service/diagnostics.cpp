#include "service/diagnostics.h"

#include <array>
#include <cinttypes>
#include <cstddef>
#include <cstring>

#include "common/logger.h"
#include "common/scope_exit.h"
#include "common/text_util.h"
#include "platform/environment.h"
#include "platform/memory.h"
#include "platform/platform.h"
#include "platform/sessions.h"
#include "platform/system_info.h"
#include "platform/threads.h"

namespace nuvelta {

namespace {
constexpr const char* kCaller = "ServiceMain";
}  // namespace

void LogBootTime() {
  constexpr const char* kName = "getSystemInfo";
  platform::SystemInformation& system = *platform::Os().system_information;
  if (!system.LookUpNtQuerySystemInformation()) {
    LogError(kName, "Get NtQuerySystemInformation Addr Failed!\n");
    return;
  }
  // SYSTEM_TIMEOFDAY_INFORMATION begins with the boot time.
  alignas(int64_t) std::array<std::byte, 32> information{};  // or the system refuses it
  if (system.NtQuerySystemInformation(platform::kSystemTimeOfDayInformation, information) != 0) {
    platform::Os().environment->WriteStandardOutput("NtQuerySystemInformation Failed!\n");
    return;
  }
  platform::FileTime boot = 0;
  std::memcpy(&boot, information.data(), sizeof boot);
  // [fixed] "(ms)", though it is a FILETIME in hexadecimal.
  LogInfo(kName, "boot time (ms) == %" PRIX64 "\n", boot);
  platform::FileTime local = boot;
  system.FileTimeToLocalFileTime(boot, local);
  platform::SystemTime time;
  system.FileTimeToSystemTime(local, time);
  // [fixed] the month first.
  LogInfo(kName, "Date: %02d-%02d-%04d\nTime: %02d:%02d:%02d\n", time.wMonth, time.wDay, time.wYear,
          time.wHour, time.wMinute, time.wSecond);
}

void LogFileVersion() {
  using platform::kMaxPath;
  platform::SystemInformation& system = *platform::Os().system_information;
  std::array<char16_t, kMaxPath + 1> path{};  // one more, so that it always ends
  system.GetModuleFileNameW(std::span(path).first(kMaxPath));
  const uint32_t size = system.GetFileVersionInfoSizeW(path.data());
  LogInfo(kCaller, "filename: %s", ToAnsi(path.data()).c_str());
  const size_t block_size = (static_cast<size_t>(size) + 1) * 2;
  platform::Memory& memory = *platform::Os().memory;
  auto* block = static_cast<std::byte*>(memory.HeapAlloc(block_size));
  if (block == nullptr) return;
  const ScopeExit free([&] { memory.HeapFree(block); });
  std::memset(block, 0, block_size);
  platform::FixedFileInfo info;
  if (!system.GetFileVersionInfoW(path.data(), {block, size}) ||
      !system.VerQueryValueW({block, size}, info)) {
    return;
  }
  LogInfo(kCaller, "verion: %d.%d.%d.%d", static_cast<int>(info.dwFileVersionMS >> 16U),
          static_cast<int>(info.dwFileVersionMS & 0xFFFFU),
          static_cast<int>(info.dwFileVersionLS >> 16U),
          static_cast<int>(info.dwFileVersionLS & 0xFFFFU));
}

void LogSessions() {
  const platform::SessionInfo* list = nullptr;
  uint32_t count = 0;
  if (!platform::Os().sessions->WTSEnumerateSessionsW(list, count)) {
    const auto error = static_cast<int>(platform::Os().threads->GetLastError());
    LogInfo(kCaller, "WTSEnumerateSessions failed. GetLastError: %d", error);
    return;
  }
  LogInfo(kCaller, "dwSessionCount: %d", static_cast<int>(count));
  uint32_t active = 0;
  for (uint32_t i = 0; i < count; ++i) {
    const std::string name = ToAnsi(list[i].pWinStationName);
    if (list[i].State == platform::kWtsActive) {
      active = list[i].SessionId;
      LogInfo(kCaller, "[%d]SessionNumber is: %d ,pWinStationName = %s is active",
              static_cast<int>(i), static_cast<int>(active), name.c_str());
    } else {
      // [fixed] the active session's id seen so far, not this session's.
      LogInfo(kCaller,
              "[%d]SessionNumber is: %d ,wts.State = %d"
              " (0 WTSActive ; 1 WTSConnected ;4 WTSDisconnected ;9 WTSInit ) , "
              ",pWinStationName = %s ",
              static_cast<int>(i), static_cast<int>(active), static_cast<int>(list[i].State),
              name.c_str());
    }
  }
}

}  // namespace nuvelta
