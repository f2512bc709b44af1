#include "support/log_lines.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>

namespace nuvelta::support {

namespace {

constexpr std::string_view kShape = "dddd-dd-dd dd:dd:dd.ddd xxxxxxxx ";
constexpr size_t kTimeLength = 23;
constexpr size_t kThreadLength = 8;
// The logger cuts a message at 4095 characters; what goes on much longer is none of its.
constexpr size_t kLongestRecord = 65536;

// The shape as the two ranges in which each of its characters may be, which the compiler
// makes a few wide comparisons of: every line of a log is held to it.
constexpr size_t kWide = 32;  // all but the last blank
struct Ranges {
  std::array<uint8_t, kWide> low{}, span{}, other_low{}, other_span{};
};

constexpr Ranges kRanges = [] {
  Ranges ranges;
  for (size_t i = 0; i < kWide; ++i) {
    const bool digit = kShape[i] == 'd' || kShape[i] == 'x';
    ranges.low[i] = ranges.other_low[i] = static_cast<uint8_t>(digit ? '0' : kShape[i]);
    ranges.span[i] = ranges.other_span[i] = digit ? 9 : 0;
    if (kShape[i] != 'x') continue;
    ranges.other_low[i] = 'a';
    ranges.other_span[i] = 5;
  }
  return ranges;
}();

bool HasShape(const char* text) {
  uint8_t wrong = 0;
  for (size_t i = 0; i < kWide; ++i) {
    const auto letter = static_cast<uint8_t>(text[i]);
    const bool in_one = static_cast<uint8_t>(letter - kRanges.low[i]) <= kRanges.span[i];
    const bool in_other =
        static_cast<uint8_t>(letter - kRanges.other_low[i]) <= kRanges.other_span[i];
    wrong |= static_cast<uint8_t>(!(in_one | in_other));
  }
  return wrong == 0 && text[kWide] == kShape[kWide];
}

enum class Begins { kYes, kNo, kTooFewBytes };

Begins BeginsRecord(std::string_view rest, bool finished) {
  // Most lines inside of a record are told by their first byte.
  if (!rest.empty() && (rest.front() < '0' || rest.front() > '9')) return Begins::kNo;
  if (rest.size() < kShape.size()) return finished ? Begins::kNo : Begins::kTooFewBytes;
  return HasShape(rest.data()) ? Begins::kYes : Begins::kNo;
}

LogLine MakeLine(std::string_view record, uint64_t number) {
  if (record.ends_with("\r\n")) record.remove_suffix(2);
  return {.time = record.substr(0, kTimeLength),
          .thread = record.substr(kTimeLength + 1, kThreadLength),
          .text = record.substr(kShape.size()),
          .number = number};
}

// Where the record at the front of `rest` ends: behind the last line that belongs to it.
// None when that is still to come.
std::optional<size_t> EndOfRecord(std::string_view rest, bool finished, uint64_t& lines) {
  for (size_t at = kShape.size(); at < kLongestRecord;) {
    const size_t end = rest.find('\n', at);
    if (end == std::string_view::npos) break;
    ++lines;
    at = end + 1;
    switch (BeginsRecord(rest.substr(at), finished)) {
      case Begins::kYes:
        return at;
      case Begins::kTooFewBytes:
        return std::nullopt;
      case Begins::kNo:
        break;
    }
  }
  if (rest.size() >= kLongestRecord) return kLongestRecord;
  if (!finished) return std::nullopt;
  return rest.size();
}

}  // namespace

LogSplitter::LogSplitter() : m_bytes(2 * kLongestRecord) {}

// There is always some: a record that does not end is cut before it has taken all.
std::span<char> LogSplitter::Room() {
  std::memmove(m_bytes.data(), m_bytes.data() + m_at, m_size - m_at);
  m_size -= m_at;
  m_at = 0;
  return std::span(m_bytes).subspan(m_size);
}

void LogSplitter::Filled(size_t count) {
  m_size += count;
  if (count > 0) m_last = m_bytes[m_size - 1];
}

// Skips the line at hand, which belongs to no record. False when its end is still to come.
bool LogSplitter::SkipStray() {
  const std::string_view rest = Rest();
  const size_t end = rest.find('\n');
  if (!m_inside) ++m_strays;
  m_inside = end == std::string_view::npos;
  m_at += m_inside ? rest.size() : end + 1;
  m_number += m_inside ? 0 : 1;
  return !m_inside;
}

bool LogSplitter::Next(LogLine& line) {
  while (m_at < m_size) {
    const std::string_view rest = Rest();
    Begins begins = m_begins ? Begins::kYes : Begins::kNo;
    if (!m_begins && !m_inside) begins = BeginsRecord(rest, m_finished);
    if (begins == Begins::kTooFewBytes) return false;
    if (begins == Begins::kNo) {
      if (!SkipStray()) return false;
      continue;
    }
    uint64_t lines = 0;
    const std::optional<size_t> end = EndOfRecord(rest, m_finished, lines);
    if (!end) return false;
    line = MakeLine(rest.substr(0, *end), m_number);
    m_number += lines;
    m_at += *end;
    // What ends a record begins the next one, unless it is cut or the last.
    m_begins = *end < rest.size() && *end != kLongestRecord;
    // A record that was cut: what follows up to its line end is no record's.
    m_inside = *end == kLongestRecord && rest[*end - 1] != '\n';
    if (m_inside) ++m_strays;
    return true;
  }
  return false;
}

std::vector<LogLine> ParseLog(std::string_view log) {
  std::vector<LogLine> lines;
  uint64_t number = 1;
  for (size_t at = 0; at < log.size();) {
    const std::string_view rest = log.substr(at);
    uint64_t count = 0;
    size_t end = 0;
    if (BeginsRecord(rest, true) == Begins::kYes) {
      end = EndOfRecord(rest, true, count).value_or(rest.size());
      lines.push_back(MakeLine(rest.substr(0, end), number));
    } else {
      end = std::min(rest.find('\n'), rest.size() - 1) + 1;
      count = 1;
    }
    number += count;
    at += end;
  }
  return lines;
}

std::string_view MessageOf(std::string_view text) {
  constexpr size_t kTag = 6;  // "i :   "
  text.remove_prefix(std::min(kTag, text.size()));
  while (text.ends_with('\n') || text.ends_with('\r')) text.remove_suffix(1);
  while (text.starts_with('\n') || text.starts_with('\r')) text.remove_prefix(1);
  return text;
}

bool Fits(std::string_view text, std::string_view pattern) {
  if (!pattern.ends_with('*')) return text == pattern;
  return text.starts_with(pattern.substr(0, pattern.size() - 1));
}

std::optional<int64_t> NumberBehind(std::string_view text, std::string_view mark) {
  const size_t at = text.find(mark);
  if (at == std::string_view::npos) return {};
  int64_t number = 0;
  const char* const begin = text.data() + at + mark.size();
  if (std::from_chars(begin, text.data() + text.size(), number).ec != std::errc()) return {};
  return number;
}

}  // namespace nuvelta::support
