// The walk over raw event records for the last logon notification.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace nuvelta {

// The members of an EVENTLOGRECORD that the log shows (winnt.h).
struct LogonRecord {
  uint32_t RecordNumber = 0;
  uint32_t TimeGenerated = 0;  // seconds since 1970
  uint32_t TimeWritten = 0;
  uint32_t EventID = 0;
  uint16_t EventType = 0;
  uint16_t EventCategory = 0;
  std::u16string SourceName;
};

// The first record of the source "Wlclntfy" (letter case counts) and of the
// information type. A record without an end to its source name is passed over; one that
// does not lie whole inside the bytes ends the walk over them.
std::optional<LogonRecord> FindLogonRecord(std::span<const std::byte> records);

}  // namespace nuvelta
