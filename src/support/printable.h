// Texts of foreign origin, made fit for a terminal, a page and JSON.
#pragma once

#include <string>
#include <string_view>

namespace nuvelta::support {

// The text as UTF-8 without control characters: what is neither stands as "\xNN".
std::string Printable(std::string_view text);

// UTF-8 of a text that the system has in UTF-16; half a surrogate pair becomes U+FFFD. (The
// service turns such texts into the system's code page, which lacks most letters.)
std::string Utf8Of(std::u16string_view text);

}  // namespace nuvelta::support
