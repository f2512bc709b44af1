#include "notebook/machine/code_page.h"

#include <algorithm>
#include <array>

namespace nuvelta::virtual_notebook {

namespace {

// 0x80 to 0x9F; the five undefined bytes stand for themselves, as the platform
// maps them.
constexpr std::array<char16_t, 32> kHighControls{
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

template <class Unit>
int Copy(std::basic_string_view<Unit> text, std::span<Unit> out) {
  if (out.empty()) return static_cast<int>(text.size());
  if (out.size() < text.size()) {
    Context::SetLastError(platform::kErrorInsufficientBuffer);
    return 0;
  }
  std::ranges::copy(text, out.begin());
  return static_cast<int>(text.size());
}

}  // namespace

std::string ToCodePage(std::u16string_view wide) {
  std::string narrow;
  narrow.reserve(wide.size());
  for (const char16_t unit : wide) {
    const auto high = std::ranges::find(kHighControls, unit);
    if (unit < 0x80 || (unit >= 0xA0 && unit <= 0xFF)) {
      narrow += static_cast<char>(unit);
    } else if (high != kHighControls.end()) {
      narrow += static_cast<char>(0x80 + (high - kHighControls.begin()));
    } else {
      narrow += '?';
    }
  }
  return narrow;
}

std::u16string FromCodePage(std::string_view narrow) {
  std::u16string wide;
  wide.reserve(narrow.size());
  for (const char letter : narrow) {
    const auto byte = static_cast<unsigned char>(letter);
    wide += byte >= 0x80 && byte < 0xA0 ? kHighControls[byte - 0x80U] : char16_t{byte};
  }
  return wide;
}

int VirtualText::WideCharToMultiByte(std::u16string_view wide, std::span<char> out) {
  if (m_context.Fails("WideCharToMultiByte")) return 0;
  return Copy<char>(ToCodePage(wide), out);
}

int VirtualText::MultiByteToWideChar(std::string_view narrow, std::span<char16_t> out) {
  if (m_context.Fails("MultiByteToWideChar")) return 0;
  return Copy<char16_t>(FromCodePage(narrow), out);
}

}  // namespace nuvelta::virtual_notebook
