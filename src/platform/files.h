// The log folder. Facts: fileapi.h reference pages.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/types.h"

namespace nuvelta::platform {

// The used members of WIN32_FIND_DATAA.
struct FindData {
  FileTime ftLastWriteTime = 0;
  uint32_t nFileSizeHigh = 0;
  uint32_t nFileSizeLow = 0;
  std::string cFileName;
};

class Files {
 public:
  virtual ~Files() = default;

  // Creates one directory; -1 on failure, existing ones included.
  virtual int _mkdir(const std::string& path) = 0;
  // The first file that matches `pattern` ("folder\prefix*suffix"); InvalidHandle
  // when there is none.
  virtual FindHandle FindFirstFileA(const std::string& pattern, FindData& data) = 0;
  virtual bool FindNextFileA(FindHandle find, FindData& data) = 0;
  virtual bool FindClose(FindHandle find) noexcept = 0;
  virtual bool DeleteFileA(const std::string& path) = 0;
  // The name under which the logging library opens the file at `path`.
  virtual std::string LibraryPath(const std::string& path) = 0;
};

}  // namespace nuvelta::platform
