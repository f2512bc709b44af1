#include "service/resume.h"

#include <array>
#include <cinttypes>
#include <cstdio>
#include <ctime>

#include "common/logger.h"
#include "platform/clock.h"
#include "platform/platform.h"
#include "platform/service_control.h"
#include "service/nservice.h"

namespace nuvelta {

namespace {

constexpr const char* kPowerChanged = "PowerChanged";
constexpr int64_t kQuickBootThreshold = 5;  // seconds

// Suspend and resume come one after the other on the callback thread, which is
// what makes these safe without a lock.
std::array<char, 56> g_szSuspendTime{};
int64_t g_suspendTime_t = 0;

void OnSuspend() {
  platform::Clock& clock = *platform::Os().clock;
  g_szSuspendTime.fill('\0');
  g_suspendTime_t = clock.time();
  const std::tm local = clock.localtime(g_suspendTime_t);
  std::snprintf(g_szSuspendTime.data(), g_szSuspendTime.size(), "%04d-%02d-%02d %02d:%02d:%02d",
                local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min,
                local.tm_sec);
  LogInfo(kPowerChanged, "PBT_APMSUSPEND g_szSuspendTime = %s ; g_suspendTime_t = %" PRId64,
          g_szSuspendTime.data(), g_suspendTime_t);
}

void OnResume() {
  std::array<char, 56> timeText{};
  int64_t logonTime = 0;
  getLastLogTime(timeText, logonTime);
  // [fixed] the Chinese words ("system start-up time"), in code page 936.
  LogInfo(kPowerChanged,
          "PBT_APMRESUMEAUTOMATIC \xCF\xB5\xCD\xB3\xBF\xAA\xBB\xFA\xCA\xB1\xBC\xE4"
          " = %s ; logonTime = %" PRId64,
          timeText.data(), logonTime);
  LogInfo(kPowerChanged, "PBT_APMRESUMEAUTOMATIC g_szSuspendTime = %s ; g_suspendTime_t = %" PRId64,
          g_szSuspendTime.data(), g_suspendTime_t);
  const int64_t difference = g_suspendTime_t - logonTime;
  // [fixed] no suspend seen yet, or a logon after it, makes the difference negative:
  // a quick boot.
  if (difference >= kQuickBootThreshold) {
    LogInfo(kPowerChanged,
            "PBT_APMRESUMEAUTOMATIC is sleep or   Hibernate ,then resume"
            "; g_suspendTime_t - logonTime = %" PRId64,
            difference);
    if (g_pNService != nullptr) NService::dealSleepResume();
  } else {
    LogInfo(kPowerChanged,
            "PBT_APMRESUMEAUTOMATIC is quick boot ; g_suspendTime_t - logonTime = %" PRId64,
            difference);
    if (g_pNService != nullptr) NService::dealQuickBoot();
  }
}

}  // namespace

uint32_t PowerChanged(void* /*context*/, uint32_t type, const void* /*setting*/) {
  LogInfo(kPowerChanged,
          "PowerChanged: Event Type = %d"
          " ( 4 PBT_APMSUSPEND; 7 PBT_APMRESUMESUSPEND ; 18 PBT_APMRESUMEAUTOMATIC)",
          static_cast<int>(type));
  if (type == platform::kPbtApmSuspend) OnSuspend();
  if (type == platform::kPbtApmResumeAutomatic) OnResume();
  return 1;
}

void MakeSuspendTimeAfreshForSimulation() {
  g_szSuspendTime.fill('\0');
  g_suspendTime_t = 0;
}

}  // namespace nuvelta
