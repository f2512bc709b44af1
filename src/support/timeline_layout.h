// Where the lines of a log stand on paper. The axis follows the lines: each takes a step,
// and more where time passes, but long pauses are folded. It is cut into strips.
#pragma once

#include <cstdint>
#include <vector>

#include "support/timeline_model.h"

namespace nuvelta::support {

inline constexpr int kStripWidth = 1000;

// A folded pause, before a line.
struct FoldedPause {
  uint64_t before = 0;
  int x = 0;
  int width = 0;
};

struct Strip {
  size_t process = 0;    // its place in the model
  uint64_t begin = 0;    // its lines, from here
  uint64_t end = 0;      // up to here
  std::vector<int> x{};  // of each line, and of the end
  std::vector<FoldedPause> pauses{};
  bool repeats = false;  // nothing but runs like the one before

  int XOf(uint64_t line) const { return x[line - begin]; }
  int Width() const { return x.back(); }
};

// All strips, in the order of the lines.
std::vector<Strip> LayOut(const TimelineModel& model);

}  // namespace nuvelta::support
