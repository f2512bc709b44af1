#include "support/capture/event_record.h"

#include <algorithm>
#include <cstring>

#include "support/wide_text.h"

namespace nuvelta::support {

namespace {

constexpr size_t kHeader = 56;  // sizeof(EVENTLOGRECORD)
constexpr size_t kSidHead = 8;  // revision, count, authority

uint32_t Number(std::span<const uint8_t> bytes, size_t at) {
  uint32_t number = 0;
  std::memcpy(&number, bytes.data() + at, sizeof number);
  return number;
}

// The text at `at`, and where it ends behind its zero.
struct WideAt {
  std::u16string text;
  size_t end = 0;
};
WideAt TextAt(const Bytes& record, size_t at) {
  WideAt found{.text = WideFrom(std::span(record).subspan(std::min(at, record.size()))), .end = 0};
  found.end = at + (found.text.size() + 1) * sizeof(char16_t);
  return found;
}

// Source and computer stand behind the header.
size_t NamesEnd(const Bytes& record) { return TextAt(record, TextAt(record, kHeader).end).end; }

void ClearUnit(Bytes& record, size_t at) {
  const unsigned unit = record[at] | (unsigned{record[at + 1]} << 8U);
  char16_t clear = static_cast<char16_t>(unit);
  if (unit >= '0' && unit <= '9') clear = u'9';
  if ((unit >= 'A' && unit <= 'Z') || (unit >= 'a' && unit <= 'z') || unit >= 0x80) clear = u'x';
  record[at] = static_cast<uint8_t>(clear & 0xFFU);
  record[at + 1] = static_cast<uint8_t>(clear >> 8U);
}

}  // namespace

std::optional<size_t> RecordLength(std::span<const uint8_t> bytes) {
  if (bytes.size() < kHeader) return std::nullopt;
  const uint32_t length = Number(bytes, 0);
  if (length < kHeader || length > bytes.size()) return std::nullopt;
  return length;
}

bool IsLogon(const Bytes& record) {
  if (!RecordLength(record)) return false;
  const uint32_t type = Number(record, 24) & 0xFFFFU;
  return type == 4 && TextAt(record, kHeader).text == u"Wlclntfy";
}

std::string ComputerOf(const Bytes& record) {
  if (RecordLength(record) != record.size()) return {};
  const size_t at = TextAt(record, kHeader).end;
  return at < record.size() ? Utf8Of(TextAt(record, at).text) : std::string();
}

void ClearTexts(Bytes& record) {
  if (RecordLength(record) != record.size()) return;
  const size_t begin = NamesEnd(record);
  const size_t end = record.size() - sizeof(uint32_t);
  if (begin >= end) return;
  const size_t texts = std::clamp<size_t>(Number(record, 36), begin, end);
  const size_t data = std::clamp<size_t>(Number(record, 52), texts, end);
  const size_t sid = Number(record, 44);
  const size_t sid_length = Number(record, 40);
  for (size_t at = texts; at + 1 < data; at += 2) ClearUnit(record, at);
  std::fill(record.begin() + static_cast<std::ptrdiff_t>(data),
            record.begin() + static_cast<std::ptrdiff_t>(end), uint8_t{0});
  if (sid < begin || sid_length <= kSidHead || sid_length > end || sid > end - sid_length) return;
  std::fill(record.begin() + static_cast<std::ptrdiff_t>(sid + kSidHead),
            record.begin() + static_cast<std::ptrdiff_t>(sid + sid_length), uint8_t{0});
}

}  // namespace nuvelta::support
