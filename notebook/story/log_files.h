// The log files that a story's service wrote, in the order of their lines.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace nuvelta::story {

// The files of `folder` that were begun at `begin` ("YYYY-MM-DD_hh.mm.ss") or
// later, oldest lines first: a rotated file stands before the one that followed
// it. Empty when there is no such folder.
std::vector<std::filesystem::path> LogFilesSince(const std::filesystem::path& folder,
                                                 const std::string& begin);

// A whole file; empty when it cannot be read.
std::string ReadFile(const std::filesystem::path& file);

}  // namespace nuvelta::story
