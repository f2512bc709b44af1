#include "common/log_folder.h"

#include <array>
#include <cstdio>
#include <ctime>

#include "platform/clock.h"
#include "platform/environment.h"
#include "platform/files.h"
#include "platform/platform.h"
#include "platform/types.h"

namespace nuvelta {

namespace {

constexpr const char* kProductFolder = "\\Nuvelta Wireless Inc\\MAService";

}  // namespace

std::string BuildLogFolderPath() {
  std::array<char, platform::kMaxPath> path{};
  const std::string root = platform::Os().environment->GetVariable("programdata");
  std::snprintf(path.data(), path.size(), "%s%s\\%s", root.c_str(), kProductFolder, kLogProgram);
  return path.data();
}

std::string BuildLogFilePath(const std::string& folder) {
  platform::Clock& clock = *platform::Os().clock;
  const std::tm local = clock.localtime(clock.time());
  std::array<char, platform::kMaxPath> name{};
  std::snprintf(name.data(), name.size(), "%s%s_%04d-%02d-%02d_%02d.%02d.%02d%s", kLogFilePrefix,
                kLogProgram, local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour,
                local.tm_min, local.tm_sec, kLogFileSuffix);
  std::array<char, platform::kMaxPath> path{};
  std::snprintf(path.data(), path.size(), "%s\\%s", folder.c_str(), name.data());
  return path.data();
}

void CreateFolders(const std::string& path) {
  platform::Files& files = *platform::Os().files;
  size_t created = 0;
  for (size_t at = path.find('\\'); at != std::string::npos; at = path.find('\\', at + 1)) {
    created = at + 1;
    files._mkdir(path.substr(0, created));
  }
  if (created < path.size()) files._mkdir(path);
}

}  // namespace nuvelta
