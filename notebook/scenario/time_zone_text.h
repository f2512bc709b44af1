// The form of POSIX time zones.
#pragma once

#include <string_view>

namespace nuvelta::virtual_notebook {

// "UTC", or a name and its offset, with the daylight-saving name and both rules
// behind it or without: "CET-1CEST,M3.5.0,M10.5.0/3".
bool IsTimeZone(std::string_view text);

}  // namespace nuvelta::virtual_notebook
