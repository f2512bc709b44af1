// Keeps the log folder within 100 MB and 90 days.
#pragma once

#include <cstdint>
#include <set>
#include <string>

namespace nuvelta {

struct LogFileRecord {
  double age = 0;    // seconds since the last write
  int64_t size = 0;  // bytes
  std::string name;  // without the folder
};

// The order of deletion: greater age first, then greater size, then the name
// that compares greater byte by byte.
struct DeletionOrder {
  bool operator()(const LogFileRecord& left, const LogFileRecord& right) const;
};
using LogFileSet = std::set<LogFileRecord, DeletionOrder>;

// What the limits say of the oldest file left in a folder of `total` bytes.
struct RetentionVerdict {
  bool keep = false;       // it and all younger ones stay
  bool too_large = false;  // the folder is above its limit
  bool too_old = false;    // the file is above its age
};
RetentionVerdict JudgeOldest(int64_t total, double age);

// Seconds since 1970 of a FILETIME, rounded down.
int64_t FileTimeToSeconds(uint64_t file_time);

// Deletes the oldest monitor logs of `folder` (no trailing backslash) until the
// limits hold. Runs once a service start; failures are logged, never reported.
void DeleteFileWhileExceedMaxSizeAndTime(const std::string& folder);

}  // namespace nuvelta
