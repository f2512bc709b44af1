// Between UTF-8, the UTF-16 of the system and its ANSI code page. (The service turns UTF-16
// into the code page, which lacks most letters.)
#pragma once

#include <span>
#include <string>
#include <string_view>

#include <cstdint>
#include <vector>

namespace nuvelta::support {

// What is no text becomes U+FFFD.
std::string Utf8Of(std::u16string_view wide);
std::u16string WideOf(std::string_view utf8);
std::string Utf8OfAnsi(std::string_view ansi);

// UTF-16LE as bytes, without a terminator.
std::string WideBytes(std::u16string_view wide);
// The units up to the first zero, or to the end.
std::u16string WideFrom(std::span<const uint8_t> bytes);

}  // namespace nuvelta::support
