#include "notebook/model/unicode.h"

namespace nuvelta::virtual_notebook {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

struct Decoded {
  char32_t code = kReplacement;
  size_t length = 1;
};

Decoded DecodeOne(std::string_view utf8) {
  const auto byte = [&](size_t i) { return static_cast<unsigned char>(utf8[i]); };
  const unsigned lead = byte(0);
  if (lead < 0x80) return {lead, 1};
  const size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC2 ? 2 : 0;
  if (length == 0 || lead > 0xF4 || utf8.size() < length) return {};
  char32_t code = lead & (0xFFU >> (length + 1));
  for (size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0U) != 0x80) return {};
    code = (code << 6U) | (byte(i) & 0x3FU);
  }
  const bool overlong = (length == 3 && code < 0x800) || (length == 4 && code < 0x10000);
  const bool surrogate = code >= 0xD800 && code < 0xE000;
  return overlong || surrogate || code > 0x10FFFF ? Decoded{} : Decoded{code, length};
}

void AppendUtf8(std::string& text, char32_t code) {
  if (code < 0x80) {
    text += static_cast<char>(code);
  } else if (code < 0x800) {
    text += static_cast<char>(0xC0U | (code >> 6U));
    text += static_cast<char>(0x80U | (code & 0x3FU));
  } else if (code < 0x10000) {
    text += static_cast<char>(0xE0U | (code >> 12U));
    text += static_cast<char>(0x80U | ((code >> 6U) & 0x3FU));
    text += static_cast<char>(0x80U | (code & 0x3FU));
  } else {
    text += static_cast<char>(0xF0U | (code >> 18U));
    text += static_cast<char>(0x80U | ((code >> 12U) & 0x3FU));
    text += static_cast<char>(0x80U | ((code >> 6U) & 0x3FU));
    text += static_cast<char>(0x80U | (code & 0x3FU));
  }
}

}  // namespace

std::u16string Utf16(std::string_view utf8) {
  std::u16string text;
  while (!utf8.empty()) {
    const Decoded next = DecodeOne(utf8);
    utf8.remove_prefix(next.length);
    if (next.code < 0x10000) {
      text += static_cast<char16_t>(next.code);
    } else {
      text += static_cast<char16_t>(0xD800 + ((next.code - 0x10000) >> 10U));
      text += static_cast<char16_t>(0xDC00 + ((next.code - 0x10000) & 0x3FFU));
    }
  }
  return text;
}

std::string Utf8(std::u16string_view utf16) {
  std::string text;
  for (size_t i = 0; i < utf16.size(); ++i) {
    char32_t code = utf16[i];
    const bool high = code >= 0xD800 && code < 0xDC00;
    if (high && i + 1 < utf16.size() && utf16[i + 1] >= 0xDC00 && utf16[i + 1] < 0xE000) {
      code = 0x10000 + ((code - 0xD800) << 10U) + (utf16[++i] - 0xDC00U);
    } else if (code >= 0xD800 && code < 0xE000) {
      code = kReplacement;
    }
    AppendUtf8(text, code);
  }
  return text;
}

std::vector<uint8_t> Utf16Bytes(std::string_view utf8, int terminators) {
  std::vector<uint8_t> bytes;
  for (const char16_t unit :
       Utf16(utf8) + std::u16string(static_cast<size_t>(terminators), u'\0')) {
    bytes.push_back(static_cast<uint8_t>(unit & 0xFFU));
    bytes.push_back(static_cast<uint8_t>(unit >> 8U));
  }
  return bytes;
}

std::string Folded(std::string_view name) {
  std::string folded(name);
  for (char& letter : folded) {
    if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter - 'A' + 'a');
  }
  return folded;
}

}  // namespace nuvelta::virtual_notebook
