// Calendar time and the process clock.
#pragma once

#include <chrono>
#include <cstdint>
#include <ctime>

namespace nuvelta::platform {

class Clock {
 public:
  virtual ~Clock() = default;

  // The moment that a log record carries.
  virtual std::chrono::system_clock::time_point Now() noexcept = 0;
  // Seconds since 1970 (UTC).
  virtual int64_t time() noexcept = 0;
  // Broken-down local time; all zero when it cannot be represented.
  virtual std::tm localtime(int64_t seconds) noexcept = 0;
  // Milliseconds since some moment before the process started.
  virtual int64_t clock() noexcept = 0;
};

}  // namespace nuvelta::platform
