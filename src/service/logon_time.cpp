// The time of the last logon, from the Application event log.
#include <cstdio>
#include <ctime>
#include <optional>
#include <vector>

#include "common/logger.h"
#include "common/scope_exit.h"
#include "common/text_util.h"
#include "platform/clock.h"
#include "platform/event_log.h"
#include "platform/platform.h"
#include "service/logon_record.h"
#include "service/resume.h"

namespace nuvelta {

namespace {

constexpr const char* kGetLastLogTime = "getLastLogTime";
constexpr size_t kReadBufferSize = 0x8000;
constexpr int64_t kFallbackAge = 604800;  // seconds, seven days

// [fixed] the raw month, 0 to 11, in every text of this file.
void WriteTime(std::span<char> text, const std::tm& local) {
  std::snprintf(text.data(), text.size(), "%04d-%02d-%02d %02d:%02d:%02d", local.tm_year + 1900,
                local.tm_mon, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec);
}

std::optional<LogonRecord> FindNewestLogon(platform::EventLogHandle log) {
  std::vector<std::byte> buffer(kReadBufferSize);
  uint32_t dwRead = 0;
  uint32_t dwNeeded = 0;
  while (platform::Os().event_log->ReadEventLogW(
             log, platform::kEventLogSequentialRead | platform::kEventLogBackwardsRead, 0, buffer,
             dwRead, dwNeeded) &&
         dwRead != 0) {  // a read of nothing would come again for ever
    LogInfo(kGetLastLogTime, "dwRead = %d,dwNeeded = %d", static_cast<int>(dwRead),
            static_cast<int>(dwNeeded));
    const size_t size = dwRead < buffer.size() ? dwRead : buffer.size();
    if (auto record = FindLogonRecord(std::span<const std::byte>(buffer).first(size))) {
      return record;
    }
  }
  return std::nullopt;
}

void LogLogon(const LogonRecord& record, const std::tm& local) {
  LogInfo(kGetLastLogTime,
          "find logon time !! 00 RecordNumber = %d ; Event ID: %08d EventType: %d"
          " ; EventCategory = %d ; TimeGenerated = %d ;TimeWritten = %d"
          "(%04d-%02d-%02d %02d:%02d:%02d ) Source: %s",
          static_cast<int>(record.RecordNumber), static_cast<int>(record.EventID), record.EventType,
          record.EventCategory, static_cast<int>(record.TimeGenerated),
          static_cast<int>(record.TimeWritten), local.tm_year + 1900, local.tm_mon, local.tm_mday,
          local.tm_hour, local.tm_min, local.tm_sec, ToAnsi(record.SourceName).c_str());
}

// Fills the outputs from the newest logon record of an open log; false when the
// log has none and a time seven days back stands in.
bool TakeLogonTime(platform::EventLogHandle log, std::span<char> timeText, int64_t& logonTime) {
  platform::Clock& clock = *platform::Os().clock;
  const ScopeExit close([&] { platform::Os().event_log->CloseEventLog(log); });
  if (const std::optional<LogonRecord> record = FindNewestLogon(log)) {
    const std::tm local = clock.localtime(record->TimeWritten);
    LogLogon(*record, local);
    WriteTime(timeText, local);
    logonTime = record->TimeWritten;
    return true;
  }
  logonTime = clock.time() - kFallbackAge;
  WriteTime(timeText, clock.localtime(logonTime));
  // [fixed] "one day ago", though it is seven days back.
  LogInfo(kGetLastLogTime,
          "not find logon time,because start long long ago , so set a fake time = %s : one day ago",
          timeText.data());
  return false;
}

}  // namespace

bool getLastLogTime(std::span<char> timeText, int64_t& logonTime) {
  LogInfo(kGetLastLogTime, "+getLastLogTime");
  const platform::EventLogHandle log = platform::Os().event_log->OpenEventLogW(u"Application");
  if (log == platform::EventLogHandle{}) {
    LogError(kGetLastLogTime, "Could not open the Application event log.");
    return false;
  }
  const bool found = TakeLogonTime(log, timeText, logonTime);
  LogInfo(kGetLastLogTime, "-getLastLogTime");
  return found;
}

}  // namespace nuvelta
