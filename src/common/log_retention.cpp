#include "common/log_retention.h"

#include <array>
#include <cstdio>

#include "common/func_trace.h"
#include "common/log_folder.h"
#include "common/logger.h"
#include "common/scope_exit.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/platform.h"
#include "platform/threads.h"
#include "platform/types.h"

namespace nuvelta {

namespace {

constexpr const char* kRetention = "DeleteFileWhileExceedMaxSizeAndTime";
constexpr double kSecondsPerDay = 86400;
constexpr int64_t kBytesPerMegabyte = 1048576;
constexpr int64_t kMaxFolderSize = 100 * kBytesPerMegabyte;
constexpr double kMaxAge = 90 * kSecondsPerDay;

double Megabytes(int64_t bytes) { return static_cast<double>(bytes) / kBytesPerMegabyte; }

struct Scan {
  LogFileSet files;
  int64_t total = 0;
};

void AddFile(Scan& scan, const platform::FindData& data, int64_t now, int number) {
  LogFileRecord record;
  record.size =
      static_cast<int64_t>((static_cast<uint64_t>(data.nFileSizeHigh) << 32U) | data.nFileSizeLow);
  record.age = static_cast<double>(now - FileTimeToSeconds(data.ftLastWriteTime));
  record.name = data.cFileName;
  scan.total += record.size;
  LogInfo(kRetention, "add log file[%d] :diff[%.02f s] ; filesize[%.03f MB] %s ", number,
          record.age, Megabytes(record.size), record.name.c_str());
  scan.files.insert(std::move(record));
}

Scan ScanFolder(const std::string& folder) {
  std::array<char, platform::kMaxPath> pattern{};
  std::snprintf(pattern.data(), pattern.size(), "%s\\%s*%s", folder.c_str(), kLogFilePrefix,
                kLogFileSuffix);
  LogInfo(kRetention, "check path : %s ", pattern.data());

  Scan scan;
  const int64_t now = platform::Os().clock->time();
  platform::Files& files = *platform::Os().files;
  platform::FindData data;
  const platform::FindHandle find = files.FindFirstFileA(pattern.data(), data);
  if (find == platform::InvalidHandle<platform::FindHandle>()) return scan;
  const ScopeExit close([&] { files.FindClose(find); });
  int number = 1;
  do {
    AddFile(scan, data, now, number++);
  } while (files.FindNextFileA(find, data));
  return scan;
}

void DeleteLogFile(const std::string& folder, const std::string& name) {
  std::array<char, platform::kMaxPath> path{};
  std::snprintf(path.data(), path.size(), "%s\\%s", folder.c_str(), name.c_str());
  if (platform::Os().files->DeleteFileA(path.data())) return;
  const auto error = static_cast<int>(platform::Os().threads->GetLastError());
  LogError(kRetention, "DeleteFile %s fail,error code %d", path.data(), error);
}

void Prune(const std::string& folder, Scan scan) {
  int counter = 1;  // [fixed] advances twice for a file with both reasons
  for (const LogFileRecord& file : scan.files) {
    const RetentionVerdict verdict = JudgeOldest(scan.total, file.age);
    const double total_mb = Megabytes(scan.total);
    const double age_days = file.age / kSecondsPerDay;
    if (verdict.keep) {
      LogInfo(kRetention,
              "dwLogFolderSize: %.03f MB ,max_size  = %.03f MB ;item.time_diff = %.05f"
              " day ,max_diff = %.05f day ,break",
              total_mb, Megabytes(kMaxFolderSize), age_days, kMaxAge / kSecondsPerDay);
      return;
    }
    if (verdict.too_large) {
      LogInfo(kRetention,
              "because dwLogFolderSize: %.03f MB > max_size  = %.03f MB ; delete log file[%d] (%s"
              ") filesize[%.03f MB] ,after delete dwLogFolderSize = %.03f MB",
              total_mb, Megabytes(kMaxFolderSize), counter++, file.name.c_str(),
              Megabytes(file.size), Megabytes(scan.total - file.size));
    }
    if (verdict.too_old) {
      LogInfo(kRetention,
              "because item.time_diff[%.05f day] > max_diff[%.05f day] ; delete log file[%d] (%s)",
              age_days, kMaxAge / kSecondsPerDay, counter++, file.name.c_str());
    }
    // [fixed] also when neither reason holds, at the exact limits.
    DeleteLogFile(folder, file.name);
    // [fixed] also when the deletion failed.
    scan.total -= file.size;
  }
}

}  // namespace

bool DeletionOrder::operator()(const LogFileRecord& left, const LogFileRecord& right) const {
  if (left.age != right.age) return left.age > right.age;
  if (left.size != right.size) return left.size > right.size;
  return left.name > right.name;
}

RetentionVerdict JudgeOldest(int64_t total, double age) {
  RetentionVerdict verdict;
  verdict.keep = total < kMaxFolderSize && age < kMaxAge;
  verdict.too_large = total > kMaxFolderSize;
  verdict.too_old = age > kMaxAge;
  return verdict;
}

int64_t FileTimeToSeconds(uint64_t file_time) {
  constexpr uint64_t kUnitsPerSecond = 10000000;
  constexpr int64_t kSecondsFrom1601To1970 = 11644473600;
  return static_cast<int64_t>(file_time / kUnitsPerSecond) - kSecondsFrom1601To1970;
}

void DeleteFileWhileExceedMaxSizeAndTime(const std::string& folder) {
  const CFuncTrace trace(kRetention);
  Prune(folder, ScanFolder(folder));
}

}  // namespace nuvelta
