// The search for the last logon in raw event records: the walk itself, and the
// reads through the port, whose counts may lie.
#include <array>
#include <cstring>

#include "fake_platform.h"
#include "service/logon_record.h"
#include "service/resume.h"
#include "target.h"

namespace nuvelta::fuzz {
namespace {

constexpr int64_t kNow = 1794790726;
constexpr size_t kHeader = 56;

uint32_t Number(Bytes record, size_t at, size_t width) {
  uint32_t number = 0;
  while (width-- > 0) number = number << 8U | record[at + width];
  return number;
}

// The source's name with its end.
bool IsLogon(Bytes record) {
  constexpr std::string_view kName("W\0l\0c\0l\0n\0t\0f\0y\0\0\0", 18);
  return record.size() >= kHeader + kName.size() && Number(record, 24, 2) == 4 &&
         std::memcmp(record.data() + kHeader, kName.data(), kName.size()) == 0;
}

// The first logon record; empty without one.
Bytes FirstLogon(Bytes records) {
  for (size_t at = 0; records.size() - at >= kHeader;) {
    const uint32_t length = Number(records, at, 4);
    if (length < kHeader || length > records.size() - at) break;
    if (IsLogon(records.subspan(at, length))) return records.subspan(at, length);
    at += length;
  }
  return {};
}

void RequireRecord(Bytes records) {
  const auto found = FindLogonRecord(std::as_bytes(records));
  const Bytes expected = FirstLogon(records);
  Require(found.has_value() == !expected.empty(), "a record is found where there is one");
  if (!found) return;
  Require(found->RecordNumber == Number(expected, 8, 4), "RecordNumber");
  Require(found->TimeGenerated == Number(expected, 12, 4), "TimeGenerated");
  Require(found->TimeWritten == Number(expected, 16, 4), "TimeWritten");
  Require(found->EventID == Number(expected, 20, 4), "EventID");
  Require(found->EventType == 4 && found->SourceName == u"Wlclntfy", "source and type");
  Require(found->EventCategory == Number(expected, 28, 2), "EventCategory");
}

std::string TimeText(int64_t seconds) {
  const time_t time = seconds;
  std::tm utc{};
  gmtime_r(&time, &utc);
  std::array<char, 80> text{};
  // The month counts from 0.
  std::snprintf(text.data(), text.size(), "%d-%02d-%02d %02d:%02d:%02d", utc.tm_year + 1900,
                utc.tm_mon, utc.tm_mday, utc.tm_hour, utc.tm_min, utc.tm_sec);
  return text.data();
}

void Run(Bytes bytes) {
  static FakePlatform fake;
  fake.clock.now = std::chrono::system_clock::time_point(std::chrono::seconds(kNow));
  Input input(bytes);
  const uint8_t mode = input.Byte();
  fake.event_log.refuse = (mode & 3U) == 3;
  fake.event_log.lie = (mode & 4U) != 0 ? 0x9000U : 0U;
  fake.event_log.chunk = size_t{input.Byte()} * 8;
  const Bytes records = input.Rest();
  // A read of nothing ends the search; a lie must come to an end by itself.
  if (fake.event_log.lie != 0) {
    fake.event_log.chunk = std::max(fake.event_log.chunk, records.size() / 4 + 1);
  }
  RequireRecord(records);

  fake.event_log.records.assign(records.begin(), records.end());
  std::array<char, 56> text{};
  int64_t time = -1;
  const bool found = getLastLogTime(text, time);
  Require(fake.HoldsNothing(), "the log is closed");
  if (fake.event_log.refuse) {
    Require(!found && time == -1 && text[0] == '\0', "nothing is told of a log that is refused");
    return;
  }
  Bytes expected;
  for (const auto& answered : fake.event_log.answered) {
    expected = FirstLogon(answered);
    if (!expected.empty()) break;
  }
  Require(found == !expected.empty(), "found in one of the reads");
  Require(time == (found ? Number(expected, 16, 4) : kNow - 604800), "the time of the record");
  Require(text.data() == TimeText(time), "the time's text");
}

const Registration g_registration("logon_record", Run);

}  // namespace
}  // namespace nuvelta::fuzz
