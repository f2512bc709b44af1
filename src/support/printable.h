// Texts of foreign origin, made fit for a terminal, a page and JSON.
#pragma once

#include <string>
#include <string_view>

namespace nuvelta::support {

// The text as UTF-8 without control characters: what is neither stands as "\xNN".
std::string Printable(std::string_view text);

}  // namespace nuvelta::support
