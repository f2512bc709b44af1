// What a service log, or any part of it, tells of the work that was done.
#pragma once

#include <cstdint>
#include <string_view>

namespace nuvelta::story {

struct LogCounts {
  uint32_t triggers = 0;  // tasks created, whatever became of them
  uint32_t runs = 0;
  uint32_t retries = 0;
  uint32_t give_ups = 0;

  LogCounts& operator+=(const LogCounts& other);
};

LogCounts CountLog(std::string_view log);

}  // namespace nuvelta::story
