// The records of a log, in their order.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace nuvelta::story {

struct LogLine {
  std::string_view thread;
  // All behind the thread id and its blank: "h : + ServiceMain", "i :   text". A
  // message's own line ends are part of it.
  std::string_view text;
};

// The views point into `log`. Text that no record owns is left out.
std::vector<LogLine> ParseLog(std::string_view log);

// Whether `text` is `pattern`, or begins with it where the pattern ends in "*".
bool Fits(std::string_view text, std::string_view pattern);

// The number behind `mark`, if the text has the mark and a number there.
std::optional<int64_t> NumberBehind(std::string_view text, std::string_view mark);

}  // namespace nuvelta::story
