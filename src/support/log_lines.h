// The records of a log in their order, and how texts of them are taken apart. A record
// begins with time and thread id as the logger writes them; lines without belong to the
// record before.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace nuvelta::support {

struct LogLine {
  std::string_view time{};  // "2026-11-16 00:58:46.000"
  std::string_view thread;
  // All behind the thread id and its blank: "h : + ServiceMain", "i :   text". A
  // message's own line ends are part of it.
  std::string_view text;
  uint64_t number = 0;  // in its file, counted from 1
};

// Cuts a log into its records while it is read, in bounded memory whatever the bytes are.
class LogSplitter {
 public:
  LogSplitter();

  // Where the next bytes of the file are to be put, and how many have been. Records handed
  // out before become invalid with the first.
  std::span<char> Room();
  void Filled(size_t count);
  // No more bytes will come.
  void Finish() { m_finished = true; }
  // The next whole record. Without one, more bytes are needed, or the file is at its end.
  bool Next(LogLine& line);

  // Lines that belong to no record.
  uint64_t Strays() const { return m_strays; }
  // Whether the file ends inside of a line.
  bool EndsInMidLine() const { return m_finished && m_last != '\n'; }

 private:
  std::string_view Rest() const { return {m_bytes.data() + m_at, m_size - m_at}; }
  bool SkipStray();

  std::vector<char> m_bytes;
  size_t m_size = 0;      // of what is in it
  size_t m_at = 0;        // of the line to be looked at next
  bool m_begins = false;  // a record is known to begin there
  uint64_t m_number = 1;  // of that line
  bool m_inside = false;  // of a line that was given up
  uint64_t m_strays = 0;
  char m_last = '\n';
  bool m_finished = false;
};

// All records of a log. The views point into `log`.
std::vector<LogLine> ParseLog(std::string_view log);

inline bool Contains(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

// The message in a line's text, without its tag and the line ends around it.
std::string_view MessageOf(std::string_view text);

// Whether `text` is `pattern`, or begins with it where the pattern ends in "*".
bool Fits(std::string_view text, std::string_view pattern);

// The number behind `mark`, if the text has the mark and a number there.
std::optional<int64_t> NumberBehind(std::string_view text, std::string_view mark);

}  // namespace nuvelta::support
