#include "support/log_files.h"

#include <algorithm>
#include <charconv>
#include <fstream>
#include <system_error>
#include <tuple>

#include "common/log_folder.h"
#include "support/path_text.h"
#include "support/text_shape.h"

namespace nuvelta::support {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kStampShape = "dddd-dd-dd_dd.dd.dd";
// A log is rotated at 1 MiB and holds 101 parts at most: all of them in one file are less.
constexpr uint64_t kLargestFile = uint64_t{1} << 30U;

}  // namespace

std::optional<LogName> ParseLogName(std::string_view name) {
  const std::string prefix = std::string(kLogFilePrefix) + kLogProgram + '_';
  constexpr std::string_view kSuffix = kLogFileSuffix;
  if (!name.starts_with(prefix) || !name.ends_with(kSuffix)) return std::nullopt;
  name = name.substr(prefix.size());
  name.remove_suffix(std::min(kSuffix.size(), name.size()));
  if (!BeginsWithShape(name, kStampShape)) return std::nullopt;
  LogName parsed{.stamp = std::string(name.substr(0, kStampShape.size()))};
  name = name.substr(kStampShape.size());
  if (name.empty()) return parsed;
  const auto [end, error] =
      std::from_chars(name.data() + 1, name.data() + name.size(), parsed.rotation);
  if (!BeginsWithShape(name, ".d") || error != std::errc() || end != name.data() + name.size())
    return std::nullopt;
  return parsed;
}

std::vector<fs::path> LogFilesIn(const fs::path& folder, std::error_code& error) {
  std::vector<std::tuple<std::string, int, fs::path>> found;
  for (fs::directory_iterator file(folder, error), end; !error && file != end;
       file.increment(error)) {
    const auto name = ParseLogName(TextOf(file->path().filename()));
    if (name) found.emplace_back(name->stamp, -name->rotation, file->path());
  }
  std::ranges::sort(found);
  std::vector<fs::path> files;
  files.reserve(found.size());
  for (const auto& [stamp, order, path] : found) files.push_back(path);
  return files;
}

FileReading ReadLogFile(const fs::path& file, bool new_log, LogStory& story) {
  FileReading reading;
  std::error_code error;
  const uint64_t size = fs::file_size(file, error);
  std::ifstream stream(file, std::ios::binary);
  if (error || !stream) {
    reading.problem = "it cannot be read" + (error ? ": " + error.message() : std::string());
    return reading;
  }
  if (size > kLargestFile) {
    reading.problem = "it is larger than 1 GiB, which no log of this service is";
    return reading;
  }
  story.BeginFile(TextOf(file.filename()), new_log);
  LogSplitter splitter;
  LogLine line;
  while (reading.bytes < size && stream) {
    const std::span<char> room = splitter.Room();
    const auto wanted = std::min<uint64_t>(room.size(), size - reading.bytes);
    stream.read(room.data(), static_cast<std::streamsize>(wanted));
    const auto count = static_cast<size_t>(stream.gcount());
    reading.bytes += count;
    splitter.Filled(count);
    if (reading.bytes == size || !stream) splitter.Finish();
    while (splitter.Next(line)) story.Take(line);
  }
  if (reading.bytes < size) reading.problem = "it became shorter while it was read";
  reading.grew = fs::file_size(file, error) > size && !error;
  story.EndFile(splitter.Strays(), splitter.EndsInMidLine());
  return reading;
}

std::vector<FileReading> ReadLogFiles(const std::vector<fs::path>& files, LogListener& listener) {
  LogStory story(listener);
  std::vector<FileReading> readings;
  std::string stamp;
  for (const fs::path& file : files) {
    const auto name = ParseLogName(TextOf(file.filename()));
    readings.push_back(ReadLogFile(file, !name || name->stamp != stamp, story));
    stamp = name ? name->stamp : std::string();
  }
  story.Finish();
  return readings;
}

}  // namespace nuvelta::support
