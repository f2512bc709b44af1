// Text put together for a page.
#pragma once

#include <concepts>
#include <cstdint>
#include <string>
#include <string_view>

namespace nuvelta::support {

// The text for a page's content and its attributes.
std::string EscapeHtml(std::string_view text);

// Cut to so many bytes, between two characters of UTF-8; what is missing is shown.
std::string Shorten(std::string_view text, size_t longest);

// "20 ms", "2.028 s", "5 min 3 s", "9 h 0 min", "3 d 4 h".
std::string DurationText(int64_t milliseconds);

// "00:58:46.000" of "2026-11-16 00:58:46.000".
std::string_view ClockOf(std::string_view time);

inline void PutOne(std::string& out, std::string_view text) { out += text; }
inline void PutOne(std::string& out, std::integral auto number) { out += std::to_string(number); }

// Appends texts and whole numbers, as they are.
template <class... Parts>
void Put(std::string& out, const Parts&... parts) {
  (PutOne(out, parts), ...);
}

}  // namespace nuvelta::support
