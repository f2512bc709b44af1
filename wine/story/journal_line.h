// How a line gets to the end of the journal's file.
#pragma once

#include <filesystem>
#include <string_view>

namespace nuvelta::wine {

// Appends `line`, which ends in a line feed, as a whole: no line of another
// thread or process comes between. Throws std::runtime_error naming the file.
void AppendLine(const std::filesystem::path& file, std::string_view line);

}  // namespace nuvelta::wine
