#include "notebook/story/log_files.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <system_error>

#include "support/log_files.h"

namespace nuvelta::story {

namespace fs = std::filesystem;

std::vector<fs::path> LogFilesSince(const fs::path& folder, const std::string& begin) {
  std::error_code error;
  std::vector<fs::path> files = support::LogFilesIn(folder, error);
  std::erase_if(files, [&](const fs::path& file) {
    return support::ParseLogName(file.filename().string())->stamp < begin;
  });
  return files;
}

std::string ReadFile(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

}  // namespace nuvelta::story
