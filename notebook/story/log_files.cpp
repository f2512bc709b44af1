#include "notebook/story/log_files.h"

#include <algorithm>
#include <charconv>
#include <fstream>
#include <iterator>
#include <optional>
#include <string_view>
#include <tuple>

#include "common/log_folder.h"
#include "notebook/model/log_names.h"
#include "notebook/story/text_shape.h"

namespace nuvelta::story {

namespace fs = std::filesystem;

namespace {

const std::string kPrefix = std::string(kLogFilePrefix) + virtual_notebook::kLogProgram;
constexpr std::string_view kStampShape = "dddd-dd-dd_dd.dd.dd";
constexpr std::string_view kSuffix = kLogFileSuffix;

// A log file's name taken apart.
struct LogName {
  std::string stamp;
  int rotation = 0;  // 0 for the file being written; counts up from there
};

std::optional<LogName> ParseName(std::string_view name) {
  if (!name.starts_with(kPrefix) || !name.ends_with(kSuffix)) return std::nullopt;
  name = name.substr(kPrefix.size());
  name.remove_suffix(kSuffix.size());
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

}  // namespace

std::vector<fs::path> LogFilesSince(const fs::path& folder, const std::string& begin) {
  std::vector<std::tuple<std::string, int, fs::path>> found;
  std::error_code error;
  for (const auto& file : fs::directory_iterator(folder, error)) {
    const auto name = ParseName(file.path().filename().string());
    if (name && name->stamp >= begin) {
      found.emplace_back(name->stamp, -name->rotation, file.path());
    }
  }
  std::ranges::sort(found);
  std::vector<fs::path> files;
  files.reserve(found.size());
  for (const auto& [stamp, order, path] : found) files.push_back(path);
  return files;
}

std::string ReadFile(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

}  // namespace nuvelta::story
