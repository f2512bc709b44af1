#include "service/logon_record.h"

#include <cstring>
#include <string_view>

namespace nuvelta {

namespace {

constexpr size_t kHeaderSize = 56;  // sizeof(EVENTLOGRECORD)
constexpr std::u16string_view kLogonSource = u"Wlclntfy";
constexpr uint16_t kInformationType = 4;  // EVENTLOG_INFORMATION_TYPE

template <class Number>
Number Read(std::span<const std::byte> record, size_t offset) {
  Number number{};
  std::memcpy(&number, record.subspan(offset).data(), sizeof number);
  return number;
}

// The source name that follows the header; none when it has no end.
std::optional<std::u16string> SourceName(std::span<const std::byte> record) {
  std::u16string name;
  for (size_t at = kHeaderSize; at + sizeof(char16_t) <= record.size(); at += sizeof(char16_t)) {
    const auto unit = Read<char16_t>(record, at);
    if (unit == u'\0') return name;
    name += unit;
  }
  return std::nullopt;
}

}  // namespace

std::optional<LogonRecord> FindLogonRecord(std::span<const std::byte> records) {
  while (records.size() >= kHeaderSize) {
    const auto length = Read<uint32_t>(records, 0);
    if (length < kHeaderSize || length > records.size()) return std::nullopt;
    const std::span<const std::byte> record = records.first(length);
    const std::optional<std::u16string> source = SourceName(record);
    const auto type = Read<uint16_t>(record, 24);
    if (source == kLogonSource && type == kInformationType) {
      return LogonRecord{.RecordNumber = Read<uint32_t>(record, 8),
                         .TimeGenerated = Read<uint32_t>(record, 12),
                         .TimeWritten = Read<uint32_t>(record, 16),
                         .EventID = Read<uint32_t>(record, 20),
                         .EventType = type,
                         .EventCategory = Read<uint16_t>(record, 28),
                         .SourceName = *source};
    }
    records = records.subspan(length);
  }
  return std::nullopt;
}

}  // namespace nuvelta
