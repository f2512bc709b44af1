#include <ctime>

#include "platform/clock.h"
#include "platform/windows/win32.h"
#include "platform/windows/windows_platform.h"

namespace nuvelta::windows {

namespace {

class Win32Clock final : public platform::Clock {
 public:
  std::chrono::system_clock::time_point Now() noexcept override {
    return std::chrono::system_clock::now();
  }

  int64_t time() noexcept override { return std::time(nullptr); }

  std::tm localtime(int64_t seconds) noexcept override {
    const time_t value = seconds;
    std::tm local{};
    if (localtime_s(&local, &value) != 0) return {};
    return local;
  }

  // On Windows the C library's clock counts the time that has passed, in ms.
  int64_t clock() noexcept override {
    static_assert(CLOCKS_PER_SEC == 1000);
    return std::clock();
  }
};

}  // namespace

platform::Clock& WindowsClock() { return Immortal<Win32Clock>(); }

}  // namespace nuvelta::windows
