// The records of a log, in their order.
#pragma once

#include <string_view>
#include <vector>

namespace nuvelta::explore {

struct LogLine {
  std::string_view thread;
  // All behind the thread id and its blank: "h : + ServiceMain", "i :   text". A
  // message's own line ends are part of it.
  std::string_view text;
};

// The views point into `log`. Text that no record owns is left out.
std::vector<LogLine> ParseLog(std::string_view log);

}  // namespace nuvelta::explore
