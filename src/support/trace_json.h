// A timeline in the trace event format, which trace viewers read.
#pragma once

#include <string>
#include <string_view>

#include "support/timeline_model.h"

namespace nuvelta::support {

// What every trace file of ours begins with.
inline constexpr std::string_view kTraceMark =
    "{\"otherData\":{\"generator\":\"hx2208_support timeline\"";

std::string TimelineTrace(const TimelineModel& model);

}  // namespace nuvelta::support
