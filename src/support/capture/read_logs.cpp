#include <algorithm>
#include <fstream>

#include "common/log_folder.h"
#include "common/scope_exit.h"
#include "platform/files.h"
#include "platform/inspection.h"
#include "platform/platform.h"
#include "support/capture/read_notebook.h"
#include "support/wide_text.h"

namespace nuvelta::support {

namespace {

// The logger begins another file at one MiB.
constexpr uint64_t kLargestLog = 4U << 20U;
constexpr int64_t kTicksPerSecondOfFiles = 10'000'000;
constexpr int64_t kTenYears = 3653LL * 24 * 3600;

int64_t SecondsOf(platform::FileTime time) {
  return static_cast<int64_t>(time) / kTicksPerSecondOfFiles - 11'644'473'600;
}

// The part of a log that is there; the service may go on writing.
std::optional<std::string> ContentOf(const std::string& path, uint64_t size) {
  std::ifstream stream(platform::Os().files->LibraryPath(path), std::ios::binary);
  std::string content(size, '\0');
  stream.read(content.data(), static_cast<std::streamsize>(size));
  if (!stream) return std::nullopt;
  return content;
}

}  // namespace

void ReadLogs(CapturedNotebook& notebook, int64_t now) {
  platform::Files& files = *platform::Os().files;
  const std::string folder = BuildLogFolderPath();
  platform::FindData data;
  const platform::FindHandle find =
      files.FindFirstFileA(folder + "\\" + kLogFilePrefix + "*" + kLogFileSuffix, data);
  if (find == platform::InvalidHandle<platform::FindHandle>()) return;
  const ScopeExit close([&] { files.FindClose(find); });
  do {
    CapturedLog log{.name = Utf8OfAnsi(data.cFileName)};
    log.age = std::clamp<int64_t>(now - SecondsOf(data.ftLastWriteTime), 0, kTenYears - 1);
    log.size = (uint64_t{data.nFileSizeHigh} << 32U) | data.nFileSizeLow;
    const std::string path = folder + "\\" + data.cFileName;
    // The entry of a file that is being written lags behind.
    platform::Inspection* const inspection = platform::Os().inspection;
    if (inspection != nullptr) inspection->GetFileSizeEx(path, log.size);
    if (log.size <= kLargestLog) {
      log.content = ContentOf(path, log.size);
      if (!log.content) notebook.not_seen.push_back("the log " + log.name);
    } else {
      notebook.not_seen.push_back("the log " + log.name + ", of which only the size is told");
    }
    notebook.logs.push_back(std::move(log));
  } while (files.FindNextFileA(find, data));
}

}  // namespace nuvelta::support
