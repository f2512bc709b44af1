// Text in the system ANSI code page, the form in which the log carries it.
#pragma once

#include <string>
#include <string_view>

namespace nuvelta {

// Empty when the text is empty or cannot be converted.
std::string ToAnsi(std::u16string_view wide);
std::u16string ToWide(std::string_view narrow);

// ToAnsi of a NUL-terminated text; a null pointer reads as empty.
std::string ToAnsi(const char16_t* wide);

// Comparisons that fold the letters A to Z only, as in the C locale.
bool EqualIgnoreCase(std::string_view left, std::string_view right);
char ToLower(char letter);
char ToUpper(char letter);

}  // namespace nuvelta
