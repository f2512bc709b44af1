// A service log as records that can be compared with those of another machine and
// another time.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace nuvelta::wine_notebook {

struct LogRecord {
  // The thread by the order in which the process's threads first wrote, from 1.
  int role = 0;
  std::string text;  // from the tag letter on; what depends on the machine is gone
};

// The records of one process of the service, in their order.
using ProcessLog = std::vector<LogRecord>;

// The log's processes, oldest first. A text that is no log makes one process with
// what can be understood of it.
std::vector<ProcessLog> ComparableLog(std::string_view log);

}  // namespace nuvelta::wine_notebook
