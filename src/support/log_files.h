// The service's log files: their names, and the order in which their lines were written.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "support/log_story.h"

namespace nuvelta::support {

// A log file's name taken apart.
struct LogName {
  std::string stamp;  // when the log was begun: "2026-11-16_00.58.46"
  int rotation = 0;   // 0 for the file being written; counts up from there
};

// None when it is not the name of a log of this service.
std::optional<LogName> ParseLogName(std::string_view name);

// The log files of a folder, oldest lines first: a rotated file stands before the one
// that followed it. Empty when the folder cannot be read; `error` says so then.
std::vector<std::filesystem::path> LogFilesIn(const std::filesystem::path& folder,
                                              std::error_code& error);

// What became of a file that was read.
struct FileReading {
  std::string problem{};  // why it could not be read, or no further
  uint64_t bytes = 0;
  bool grew = false;  // while it was read; what came late is left out
};

// Reads a file into a story, up to the size that it has when it is opened. `new_log`: it
// does not go on with the log that the file before belongs to.
FileReading ReadLogFile(const std::filesystem::path& file, bool new_log, LogStory& story);

// Reads the logs of one notebook in this order. Answers for each file what became of it.
std::vector<FileReading> ReadLogFiles(const std::vector<std::filesystem::path>& files,
                                      LogListener& listener);

}  // namespace nuvelta::support
