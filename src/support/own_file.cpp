#include "support/own_file.h"

#include <fstream>
#include <system_error>

#include "support/path_text.h"

namespace nuvelta::support {

namespace fs = std::filesystem;

namespace {

constexpr int kMostTemporaryNames = 100;

// A name beside the file that nothing has; empty when all are taken.
fs::path TemporaryName(const fs::path& file) {
  for (int i = 0; i < kMostTemporaryNames; ++i) {
    fs::path name = file;
    name += "." + std::to_string(i) + ".part";
    std::error_code error;
    if (!fs::exists(fs::symlink_status(name, error))) return name;
  }
  return {};
}

}  // namespace

std::string WhyNotOurs(const fs::path& file, std::string_view mark) {
  std::error_code error;
  const fs::file_status status = fs::status(file, error);
  if (!fs::exists(status)) return {};
  std::string begin(mark.size(), '\0');
  if (fs::is_regular_file(status)) {
    std::ifstream stream(file, std::ios::binary);
    stream.read(begin.data(), static_cast<std::streamsize>(begin.size()));
    if (stream && begin == mark) return {};
  }
  return TextOf(file) + ": it is there already, and was not written by this program";
}

std::string WriteOwnFile(const fs::path& file, std::string_view content) {
  std::string failure = TextOf(file) + ": it cannot be written";
  const fs::path temporary = TemporaryName(file);
  if (temporary.empty()) return failure + ": too many files of this name ending in .part";
  std::error_code error;
  {
    std::ofstream stream(temporary, std::ios::binary);
    if (!stream) return failure;
    stream.write(content.data(), static_cast<std::streamsize>(content.size()));
    stream.close();
    if (stream) fs::rename(temporary, file, error);
    if (stream && !error) return {};
  }
  std::error_code unknown;
  fs::remove(temporary, unknown);
  return error ? failure + ": " + error.message() : failure;
}

}  // namespace nuvelta::support
