// Paths and their texts, which are UTF-8 here on every system. (Without a word about it
// std::filesystem takes a text to be in a code page on Windows.)
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace nuvelta::support {

std::filesystem::path PathOf(std::string_view text);
// A name that is no text has "?" in the place of all but plain characters.
std::string TextOf(const std::filesystem::path& path);

}  // namespace nuvelta::support
