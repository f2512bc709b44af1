// Conversion between UTF-16 and the system ANSI code page (code page 0).
// Facts: stringapiset.h reference pages.
#pragma once

#include <span>
#include <string_view>

namespace nuvelta::platform {

class Text {
 public:
  virtual ~Text() = default;

  // Converts exactly the characters given; no terminator is added. An empty
  // `out` asks for the size needed. Returns the count of units written or
  // needed, 0 on failure or for an empty text.
  virtual int WideCharToMultiByte(std::u16string_view wide, std::span<char> out) = 0;
  virtual int MultiByteToWideChar(std::string_view narrow, std::span<char16_t> out) = 0;
};

}  // namespace nuvelta::platform
