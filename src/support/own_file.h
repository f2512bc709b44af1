// Files that the program writes for its user: whole or not at all, and over none that it
// has not written itself.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace nuvelta::support {

// Why the file must not be written: one that begins with something else than our mark is
// there. Empty when it may be.
std::string WhyNotOurs(const std::filesystem::path& file, std::string_view mark);

// Writes to a file beside it, which then takes its place. Answers what went wrong, or
// nothing.
std::string WriteOwnFile(const std::filesystem::path& file, std::string_view content);

}  // namespace nuvelta::support
