// The system's count of time and the story's.
#pragma once

#include <windows.h>

#include <cstdint>

#include "notebook/model/file_time.h"

namespace nuvelta::wine {

inline FILETIME FileTimeOf(virtual_notebook::Duration since_1970) {
  const uint64_t ticks = virtual_notebook::FileTicks(since_1970);
  return {.dwLowDateTime = static_cast<DWORD>(ticks),
          .dwHighDateTime = static_cast<DWORD>(ticks >> 32U)};
}

inline virtual_notebook::Duration Since1970(FILETIME time) {
  const auto ticks =
      static_cast<int64_t>((uint64_t{time.dwHighDateTime} << 32U) | time.dwLowDateTime);
  return virtual_notebook::Duration((ticks - virtual_notebook::kTicksBefore1970) * 100);
}

}  // namespace nuvelta::wine
