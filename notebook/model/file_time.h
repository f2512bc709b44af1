// The system's count of time: ticks of 100 ns since 1601-01-01.
#pragma once

#include <cstdint>

#include "notebook/model/scenario.h"

namespace nuvelta::virtual_notebook {

inline constexpr int64_t kTicksPerSecond = 10000000;
inline constexpr int64_t kTicksBefore1970 = 11644473600 * kTicksPerSecond;

// `since_1970` rounded down to a whole tick.
constexpr uint64_t FileTicks(Duration since_1970) {
  return static_cast<uint64_t>(since_1970.count() / 100 + kTicksBefore1970);
}

}  // namespace nuvelta::virtual_notebook
