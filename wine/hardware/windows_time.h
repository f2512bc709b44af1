// The system's count of time, 100 ns since 1601-01-01, and the story's.
#pragma once

#include <windows.h>

#include <cstdint>

#include "notebook/model/scenario.h"

namespace nuvelta::wine {

inline constexpr int64_t kTicksBefore1970 = 11644473600 * 10000000;

// `since_1970` rounded down to a whole tick.
inline FILETIME FileTimeOf(virtual_notebook::Duration since_1970) {
  const auto ticks = static_cast<uint64_t>(since_1970.count() / 100 + kTicksBefore1970);
  return {.dwLowDateTime = static_cast<DWORD>(ticks),
          .dwHighDateTime = static_cast<DWORD>(ticks >> 32U)};
}

inline virtual_notebook::Duration Since1970(FILETIME time) {
  const auto ticks =
      static_cast<int64_t>((uint64_t{time.dwHighDateTime} << 32U) | time.dwLowDateTime);
  return virtual_notebook::Duration((ticks - kTicksBefore1970) * 100);
}

}  // namespace nuvelta::wine
