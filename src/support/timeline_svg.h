// The drawings of a page: all of a log at a glance, and its strips one by one.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "support/timeline_layout.h"
#include "support/timeline_model.h"

namespace nuvelta::support {

// Room for the names of the rows, and for what a strip's last line needs.
inline constexpr int kNamesWidth = 150;
inline constexpr int kDrawingWidth = kNamesWidth + kStripWidth + 90;

std::string DrawStrip(const TimelineModel& model, const Strip& strip);
// Runs and marks lead to the strip that they are in: "#strip3".
std::string DrawMap(const TimelineModel& model, const std::vector<Strip>& strips);

// The names of a page's classes.
const char* ClassOf(Verdict verdict);
const char* ClassOf(MarkKind kind);
// "run 3, 2.028 s: radio off by failure (query_not_answered), decided in line 120".
std::string RunTitle(const TimelineRun& run);
Verdict VerdictOf(const TimelineRun& run);
// What the log says of the radio: "level 1, on".
std::string RadioText(std::optional<int32_t> level);
// "line 12, 00:58:46.000"
std::string LineTitle(const TimelineModel& model, uint64_t index);
// The outline of a mark, around its middle.
std::string MarkShape(MarkKind kind, int x, int y);

}  // namespace nuvelta::support
