#include <windows.h>

#include <stdexcept>
#include <string>

#include "wine/story/journal_line.h"

namespace nuvelta::wine {

namespace {

constexpr int kPatienceMs = 10000;

// Appending is not atomic under Wine, so writers keep each other out by the share
// mode; readers, who share everything, are let in.
HANDLE OpenAlone(const std::filesystem::path& file) {
  for (int waited = 0;; ++waited) {
    const HANDLE handle = CreateFileW(file.c_str(), FILE_APPEND_DATA, FILE_SHARE_READ, nullptr,
                                      OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle != INVALID_HANDLE_VALUE) return handle;
    if (GetLastError() != ERROR_SHARING_VIOLATION || waited == kPatienceMs) return handle;
    Sleep(1);
  }
}

}  // namespace

void AppendLine(const std::filesystem::path& file, std::string_view line) {
  const HANDLE handle = OpenAlone(file);
  DWORD written = 0;
  const bool done =
      handle != INVALID_HANDLE_VALUE &&
      WriteFile(handle, line.data(), static_cast<DWORD>(line.size()), &written, nullptr) != FALSE &&
      written == line.size();
  const DWORD error = GetLastError();
  if (handle != INVALID_HANDLE_VALUE) CloseHandle(handle);
  if (!done) throw std::runtime_error(file.string() + ": error " + std::to_string(error));
}

}  // namespace nuvelta::wine
