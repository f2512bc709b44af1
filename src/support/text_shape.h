// Fixed-width text patterns: "d" stands for a digit, "x" for a lower-case
// hexadecimal digit, any other character for itself.
#pragma once

#include <algorithm>
#include <string_view>

namespace nuvelta::support {

// Whether `text` begins with the shape.
inline bool BeginsWithShape(std::string_view text, std::string_view shape) {
  const auto fits = [](char letter, char wanted) {
    const bool digit = letter >= '0' && letter <= '9';
    if (wanted == 'd') return digit;
    if (wanted == 'x') return digit || (letter >= 'a' && letter <= 'f');
    return letter == wanted;
  };
  return text.size() >= shape.size() &&
         std::ranges::equal(text.substr(0, shape.size()), shape, fits);
}

}  // namespace nuvelta::support
