#include "support/capture/own_folder.h"

#include <filesystem>
#include <fstream>
#include <system_error>

#include "common/log_folder.h"
#include "support/own_file.h"
#include "support/path_text.h"

namespace nuvelta::support {

namespace fs = std::filesystem;

namespace {

constexpr const char* kMark = ".hx2208_capture";
constexpr const char* kMarkText = "hx2208_support capture\n";

// What a capture before has left.
std::error_code RemoveCapture(const fs::path& folder, const std::string& last) {
  std::error_code error;
  fs::remove(folder / PathOf(last), error);
  if (!error) fs::remove(folder / "firmware.bin", error);
  if (error || fs::is_symlink(folder / "logs")) return error;
  std::error_code none;
  for (const auto& file : fs::directory_iterator(folder / "logs", none)) {
    const std::string text = TextOf(file.path().filename());
    if (!text.starts_with(kLogFilePrefix) || !text.ends_with(kLogFileSuffix)) continue;
    fs::remove(file.path(), error);
    if (error) return error;
  }
  fs::remove(folder / "logs", none);
  return {};
}

}  // namespace

std::string WhyNoCapture(const std::string& folder) {
  const fs::path path = PathOf(folder);
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  if (!fs::exists(status)) return {};
  if (!fs::is_directory(status)) return folder + ": it is there already, and is no folder";
  if (fs::is_empty(path, error) || error) {
    return error ? folder + ": " + error.message() : std::string();
  }
  if (WhyNotOurs(path / kMark, kMarkText).empty() && fs::exists(path / kMark, error)) return {};
  return folder + ": there are files in it, and it was not written by this program";
}

std::string WriteCapture(const std::string& folder, const std::map<std::string, std::string>& files,
                         const std::string& last) {
  const fs::path path = PathOf(folder);
  std::error_code error;
  fs::create_directories(path, error);
  if (error) return folder + ": it cannot be made: " + error.message();
  if (std::string problem = WriteOwnFile(path / kMark, kMarkText); !problem.empty()) return problem;
  if (error = RemoveCapture(path, last); error) {
    return folder + ": the capture in it cannot be removed: " + error.message();
  }
  const auto write = [&](const std::string& name, const std::string& content) {
    const fs::path file = path / PathOf(name);
    fs::create_directories(file.parent_path(), error);
    return WriteOwnFile(file, content);
  };
  for (const auto& [name, content] : files) {
    if (name == last) continue;
    if (std::string problem = write(name, content); !problem.empty()) return problem;
  }
  return write(last, files.at(last));
}

}  // namespace nuvelta::support
