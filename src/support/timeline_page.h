// A timeline as one page of HTML that needs nothing else.
#pragma once

#include <string>
#include <string_view>

#include "support/timeline_model.h"

namespace nuvelta::support {

// What every page begins with.
inline constexpr std::string_view kPageMark = "<!DOCTYPE html>\n<!-- hx2208_support timeline -->\n";

std::string TimelinePage(const TimelineModel& model);

}  // namespace nuvelta::support
