// Between the UTF-8 of scenario files and the UTF-16 of the platform.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace nuvelta::virtual_notebook {

// Bytes that are no UTF-8 become U+FFFD.
std::u16string Utf16(std::string_view utf8);
std::string Utf8(std::u16string_view utf16);

// The bytes of a text as UTF-16LE, with `terminators` zero units behind it.
std::vector<uint8_t> Utf16Bytes(std::string_view utf8, int terminators);

// The letters A to Z folded to lower case, for names whose case is ignored.
std::string Folded(std::string_view name);

}  // namespace nuvelta::virtual_notebook
