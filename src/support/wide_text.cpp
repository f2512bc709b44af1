#include "support/wide_text.h"

#include "common/text_util.h"

namespace nuvelta::support {

namespace {

constexpr char32_t kNoText = 0xFFFD;

void AppendUtf8(std::string& text, char32_t code) {
  const auto tail = [&](unsigned shift) {
    text += static_cast<char>(0x80U | ((code >> shift) & 0x3FU));
  };
  if (code < 0x80) {
    text += static_cast<char>(code);
  } else if (code < 0x800) {
    text += static_cast<char>(0xC0U | (code >> 6U));
    tail(0);
  } else if (code < 0x10000) {
    text += static_cast<char>(0xE0U | (code >> 12U));
    tail(6);
    tail(0);
  } else {
    text += static_cast<char>(0xF0U | (code >> 18U));
    tail(12);
    tail(6);
    tail(0);
  }
}

// The length of the sequence that the byte begins; 0 when it begins none.
size_t LengthOf(unsigned lead) {
  if (lead < 0x80) return 1;
  if (lead < 0xC2 || lead > 0xF4) return 0;
  if (lead < 0xE0) return 2;
  return lead < 0xF0 ? 3 : 4;
}

char32_t TakeOne(std::string_view& utf8) {
  const auto lead = static_cast<unsigned char>(utf8.front());
  const size_t length = LengthOf(lead);
  char32_t code = length == 1 ? lead : lead & (0xFFU >> (length + 1));
  bool good = length != 0 && length <= utf8.size();
  for (size_t i = 1; good && i < length; ++i) {
    const auto byte = static_cast<unsigned char>(utf8[i]);
    good = (byte & 0xC0U) == 0x80;
    code = (code << 6U) | (byte & 0x3FU);
  }
  utf8.remove_prefix(good ? length : 1);
  return good ? code : kNoText;
}

}  // namespace

std::string Utf8Of(std::u16string_view wide) {
  std::string text;
  for (size_t i = 0; i < wide.size(); ++i) {
    char32_t code = wide[i];
    const bool low_follows = i + 1 < wide.size() && (wide[i + 1] & 0xFC00) == 0xDC00;
    if ((code & 0xFC00) == 0xD800 && low_follows) {
      code = 0x10000 + ((code & 0x3FF) << 10U) + (wide[++i] & 0x3FFU);
    } else if ((code & 0xF800) == 0xD800) {
      code = kNoText;
    }
    AppendUtf8(text, code);
  }
  return text;
}

std::u16string WideOf(std::string_view utf8) {
  std::u16string wide;
  while (!utf8.empty()) {
    const char32_t code = TakeOne(utf8);
    if (code < 0x10000) {
      wide += static_cast<char16_t>(code);
    } else {
      wide += static_cast<char16_t>(0xD800 + ((code - 0x10000) >> 10U));
      wide += static_cast<char16_t>(0xDC00 + ((code - 0x10000) & 0x3FFU));
    }
  }
  return wide;
}

std::string Utf8OfAnsi(std::string_view ansi) { return Utf8Of(ToWide(ansi)); }

std::string WideBytes(std::u16string_view wide) {
  std::string bytes;
  for (const char16_t unit : wide) {
    bytes += static_cast<char>(unit & 0xFFU);
    bytes += static_cast<char>(unit >> 8U);
  }
  return bytes;
}

std::u16string WideFrom(std::span<const uint8_t> bytes) {
  std::u16string wide;
  for (size_t i = 0; i + 1 < bytes.size(); i += 2) {
    const auto unit = static_cast<char16_t>(bytes[i] | (bytes[i + 1] << 8U));
    if (unit == u'\0') break;
    wide += unit;
  }
  return wide;
}

}  // namespace nuvelta::support
