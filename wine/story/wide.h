// Texts as Windows takes them.
#pragma once

#include <string>
#include <string_view>

#include "notebook/model/unicode.h"

namespace nuvelta::wine {

inline std::wstring Wide(std::string_view utf8) {
  const std::u16string text = virtual_notebook::Utf16(utf8);
  return {text.begin(), text.end()};
}

}  // namespace nuvelta::wine
