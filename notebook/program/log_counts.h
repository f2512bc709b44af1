// What a service log, or any part of it, tells of the work that was done.
#pragma once

#include <cstdint>
#include <string_view>

#include "support/line_kinds.h"

namespace nuvelta::story {

struct LogCounts {
  uint32_t triggers = 0;  // tasks created, whatever became of them
  uint32_t runs = 0;
  uint32_t retries = 0;
  uint32_t give_ups = 0;

  // One line of the log.
  void Add(support::LineKind kind);
};

LogCounts CountLog(std::string_view log);

}  // namespace nuvelta::story
