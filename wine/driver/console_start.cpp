#include "wine/driver/console_start.h"

#include <chrono>
#include <stdexcept>
#include <string>

#include "wine/driver/program_run.h"
#include "wine/driver/win32.h"

namespace nuvelta::wine {

namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

constexpr auto kConsolePatience = 60s;
constexpr DWORD kConsolePatienceMs = 60000;

// Keeps the manager from starting services. It would take any process that asks
// for a dispatcher meanwhile for the service that it starts.
class NoStarts {
 public:
  NoStarts() : m_manager(OpenSCManagerW(nullptr, nullptr, SC_MANAGER_ALL_ACCESS)) {
    const auto begin = Clock::now();
    while ((m_lock = LockServiceDatabase(m_manager.get())) == nullptr) {
      // Its own services come first when Wine has just been started.
      if (GetLastError() != ERROR_SERVICE_DATABASE_LOCKED ||
          Clock::now() - begin > kConsolePatience) {
        throw std::runtime_error("the service database cannot be locked: error " +
                                 std::to_string(GetLastError()));
      }
      Sleep(20);
    }
  }
  ~NoStarts() { UnlockServiceDatabase(m_lock); }
  NoStarts(const NoStarts&) = delete;
  NoStarts& operator=(const NoStarts&) = delete;

 private:
  ServiceHandle m_manager;
  SC_LOCK m_lock = nullptr;
};

}  // namespace

DWORD RunOnConsole(const std::filesystem::path& executable) {
  const NoStarts no_starts;
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  return RunToItsEnd(L"\"" + executable.wstring() + L"\"", nullptr, startup, kConsolePatienceMs);
}

}  // namespace nuvelta::wine
