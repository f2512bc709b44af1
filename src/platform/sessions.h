// Terminal sessions of the local machine. Facts: wtsapi32.h reference pages.
#pragma once

#include <cstdint>

namespace nuvelta::platform {

inline constexpr uint32_t kWtsActive = 0;  // WTSActive

// As in WTS_SESSION_INFOW.
struct SessionInfo {
  uint32_t SessionId = 0;
  const char16_t* pWinStationName = nullptr;
  uint32_t State = 0;
};

class Sessions {
 public:
  virtual ~Sessions() = default;

  // The local server, version 1. On success `list` points to `count` records that live as long as
  // the process; false sets the last error.
  virtual bool WTSEnumerateSessionsW(const SessionInfo*& list, uint32_t& count) = 0;
};

}  // namespace nuvelta::platform
