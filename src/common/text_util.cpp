#include "common/text_util.h"

#include <algorithm>

#include "platform/platform.h"
#include "platform/text.h"

namespace nuvelta {

std::string ToAnsi(std::u16string_view wide) {
  platform::Text& text = *platform::Os().text;
  const int size = text.WideCharToMultiByte(wide, {});
  if (size <= 0) return {};
  std::string narrow(static_cast<size_t>(size), ' ');
  const int written = text.WideCharToMultiByte(wide, narrow);
  narrow.resize(static_cast<size_t>(std::clamp(written, 0, size)));
  return narrow;
}

std::u16string ToWide(std::string_view narrow) {
  platform::Text& text = *platform::Os().text;
  const int size = text.MultiByteToWideChar(narrow, {});
  if (size <= 0) return {};
  std::u16string wide(static_cast<size_t>(size), u' ');
  const int written = text.MultiByteToWideChar(narrow, wide);
  wide.resize(static_cast<size_t>(std::clamp(written, 0, size)));
  return wide;
}

std::string ToAnsi(const char16_t* wide) {
  return wide == nullptr ? std::string() : ToAnsi(std::u16string_view(wide));
}

char ToLower(char letter) {
  return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

char ToUpper(char letter) {
  return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
}

bool EqualIgnoreCase(std::string_view left, std::string_view right) {
  return std::ranges::equal(left, right, [](char l, char r) { return ToLower(l) == ToLower(r); });
}

}  // namespace nuvelta
