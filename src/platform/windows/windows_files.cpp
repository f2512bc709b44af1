#include <direct.h>

#include "platform/files.h"
#include "platform/windows/win32.h"
#include "platform/windows/windows_platform.h"

namespace nuvelta::windows {

namespace {

platform::FindData ToPort(const WIN32_FIND_DATAA& data) {
  return {.ftLastWriteTime = Join(data.ftLastWriteTime),
          .nFileSizeHigh = data.nFileSizeHigh,
          .nFileSizeLow = data.nFileSizeLow,
          .cFileName = data.cFileName};
}

class Win32Files final : public platform::Files {
 public:
  int _mkdir(const std::string& path) override { return ::_mkdir(path.c_str()); }

  platform::FindHandle FindFirstFileA(const std::string& pattern,
                                      platform::FindData& data) override {
    WIN32_FIND_DATAA found{};
    const HANDLE find = ::FindFirstFileA(pattern.c_str(), &found);
    if (find != INVALID_HANDLE_VALUE) data = ToPort(found);
    return FromNative<platform::FindHandle>(find);
  }

  bool FindNextFileA(platform::FindHandle find, platform::FindData& data) override {
    WIN32_FIND_DATAA found{};
    if (::FindNextFileA(ToNative<HANDLE>(find), &found) == FALSE) return false;
    data = ToPort(found);
    return true;
  }

  bool FindClose(platform::FindHandle find) noexcept override {
    return ::FindClose(ToNative<HANDLE>(find)) != FALSE;
  }

  bool DeleteFileA(const std::string& path) override {
    return ::DeleteFileA(path.c_str()) != FALSE;
  }

  // The logging library takes names in the ANSI code page too.
  std::string LibraryPath(const std::string& path) override { return path; }
};

}  // namespace

platform::Files& WindowsFiles() { return Immortal<Win32Files>(); }

}  // namespace nuvelta::windows
