// Where the service log lies: the folder, its creation, the file's name.
#pragma once

#include <string>

namespace nuvelta {

inline constexpr const char* kLogFilePrefix = "nuvelta_maservice_monitor_";
// Between prefix and time of a log file's name, and the name of the folder.
inline constexpr const char* kLogProgram = "HX2208GW";
inline constexpr const char* kLogFileSuffix = ".log";

// The folder below the environment variable "programdata", without a trailing
// backslash, cut to 259 characters.
std::string BuildLogFolderPath();

// The path of a log file that starts now (local time), cut to 259 characters.
std::string BuildLogFilePath(const std::string& folder);

// Creates the folder level by level. Failures are ignored: most levels exist.
void CreateFolders(const std::string& path);

}  // namespace nuvelta
