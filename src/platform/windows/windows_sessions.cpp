#include <cstddef>

#include "platform/sessions.h"
#include "platform/windows/win32.h"
#include "platform/windows/windows_platform.h"

#include <wtsapi32.h>

namespace nuvelta::windows {

namespace {

static_assert(sizeof(WTS_SESSION_INFOW) == sizeof(platform::SessionInfo));
static_assert(offsetof(WTS_SESSION_INFOW, pWinStationName) ==
              offsetof(platform::SessionInfo, pWinStationName));

class Win32Sessions final : public platform::Sessions {
 public:
  bool WTSEnumerateSessionsW(const platform::SessionInfo*& list, uint32_t& count) override {
    WTS_SESSION_INFOW* sessions = nullptr;
    DWORD size = 0;
    if (::WTSEnumerateSessionsW(WTS_CURRENT_SERVER_HANDLE, 0, 1, &sessions, &size) == FALSE) {
      return false;
    }
    list = reinterpret_cast<const platform::SessionInfo*>(sessions);
    count = size;
    return true;
  }
};

}  // namespace

platform::Sessions& WindowsSessions() { return Immortal<Win32Sessions>(); }

}  // namespace nuvelta::windows
