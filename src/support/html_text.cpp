#include "support/html_text.h"

#include <array>
#include <cstdio>

namespace nuvelta::support {

std::string EscapeHtml(std::string_view text) {
  std::string escaped;
  escaped.reserve(text.size());
  for (const char letter : text) {
    switch (letter) {
      case '&':
        escaped += "&amp;";
        break;
      case '<':
        escaped += "&lt;";
        break;
      case '>':
        escaped += "&gt;";
        break;
      case '"':
        escaped += "&quot;";
        break;
      case '\'':
        escaped += "&#39;";
        break;
      default:
        escaped += letter;
    }
  }
  return escaped;
}

std::string Shorten(std::string_view text, size_t longest) {
  if (text.size() <= longest) return std::string(text);
  const auto continues = [](char byte) { return (static_cast<uint8_t>(byte) & 0xC0U) == 0x80U; };
  while (longest > 0 && continues(text[longest])) --longest;
  return std::string(text.substr(0, longest)) + "\u2026";
}

std::string DurationText(int64_t milliseconds) {
  constexpr int64_t kSecond = 1000;
  constexpr int64_t kMinute = 60 * kSecond;
  constexpr int64_t kHour = 60 * kMinute;
  constexpr int64_t kDay = 24 * kHour;
  const auto two = [&](int64_t big, const char* big_name, int64_t small, const char* small_name) {
    return std::to_string(milliseconds / big) + big_name +
           std::to_string(milliseconds % big / small) + small_name;
  };
  if (milliseconds < kSecond) return std::to_string(milliseconds) + " ms";
  if (milliseconds >= kDay) return two(kDay, " d ", kHour, " h");
  if (milliseconds >= kHour) return two(kHour, " h ", kMinute, " min");
  if (milliseconds >= kMinute) return two(kMinute, " min ", kSecond, " s");
  std::array<char, 16> text{};
  std::snprintf(text.data(), text.size(), "%.3f s", static_cast<double>(milliseconds) / 1000.0);
  return text.data();
}

std::string_view ClockOf(std::string_view time) {
  constexpr size_t kDayLength = 11;  // "2026-11-16 "
  return time.size() > kDayLength ? time.substr(kDayLength) : time;
}

}  // namespace nuvelta::support
