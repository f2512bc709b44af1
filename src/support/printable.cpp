#include "support/printable.h"

#include <array>
#include <cstdint>

namespace nuvelta::support {

namespace {

// The length of the UTF-8 sequence at the front of `text`; 0 when there is none. The
// shortest form only, no surrogates, nothing above U+10FFFF.
size_t SequenceLength(std::string_view text) {
  struct Form {
    uint8_t from, to;  // of the first byte
    size_t length;
    uint8_t low, high;  // of the second byte
  };
  constexpr std::array<Form, 8> kForms{{{0xC2, 0xDF, 2, 0x80, 0xBF},
                                        {0xE0, 0xE0, 3, 0xA0, 0xBF},
                                        {0xE1, 0xEC, 3, 0x80, 0xBF},
                                        {0xED, 0xED, 3, 0x80, 0x9F},
                                        {0xEE, 0xEF, 3, 0x80, 0xBF},
                                        {0xF0, 0xF0, 4, 0x90, 0xBF},
                                        {0xF1, 0xF3, 4, 0x80, 0xBF},
                                        {0xF4, 0xF4, 4, 0x80, 0x8F}}};
  const auto byte = [&](size_t at) { return static_cast<uint8_t>(text[at]); };
  for (const Form& form : kForms) {
    if (byte(0) < form.from || byte(0) > form.to || text.size() < form.length) continue;
    // U+0080 to U+009F steer a terminal.
    const uint8_t low = byte(0) == 0xC2 ? 0xA0 : form.low;
    if (byte(1) < low || byte(1) > form.high) return 0;
    for (size_t at = 2; at < form.length; ++at) {
      if (byte(at) < 0x80 || byte(at) > 0xBF) return 0;
    }
    return form.length;
  }
  return 0;
}

}  // namespace

std::string Printable(std::string_view text) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string result;
  result.reserve(text.size());
  while (!text.empty()) {
    const auto byte = static_cast<uint8_t>(text.front());
    size_t length = byte >= 0x20 && byte < 0x7F ? 1 : 0;
    if (byte >= 0x80) length = SequenceLength(text);
    if (length == 0) {
      result += "\\x";
      result += kDigits[byte >> 4U];
      result += kDigits[byte & 0xFU];
      length = 1;
    } else {
      result += text.substr(0, length);
    }
    text.remove_prefix(length);
  }
  return result;
}

}  // namespace nuvelta::support
