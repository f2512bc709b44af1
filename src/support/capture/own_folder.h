// Folders that the program writes for its user: no folder with files of others, and none
// that looks whole before it is.
#pragma once

#include <map>
#include <string>

namespace nuvelta::support {

// Why the folder must not be written to; empty when it may be.
std::string WhyNoCapture(const std::string& folder);

// Replaces the capture in the folder; `last` is the file that makes it whole. Answers what
// went wrong, or nothing.
std::string WriteCapture(const std::string& folder, const std::map<std::string, std::string>& files,
                         const std::string& last);

}  // namespace nuvelta::support
