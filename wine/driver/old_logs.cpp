#include "wine/driver/old_logs.h"

#include "wine/driver/win32.h"

#include <userenv.h>

#include <ctime>
#include <cwchar>
#include <stdexcept>
#include <string>

#include "common/log_folder.h"
#include "notebook/model/file_time.h"
#include "notebook/model/log_names.h"
#include "wine/story/places.h"

namespace nuvelta::wine {

namespace fs = std::filesystem;

namespace {

constexpr const wchar_t* kRootVariable = L"programdata=";

std::string NameAt(time_t begun) {
  return virtual_notebook::LogNameOf(kLogFilePrefix, *std::localtime(&begun), kLogFileSuffix);
}

// Two logs of one age are begun a second apart.
fs::path FreePath(const fs::path& folder, time_t begun) {
  while (fs::exists(folder / NameAt(begun))) --begun;
  return folder / NameAt(begun);
}

// A file of the content, or of zeros that take no room, last written at `seconds`.
Handle PutFile(const fs::path& file, const virtual_notebook::OldLog& log, int64_t seconds) {
  Handle handle(CreateFileW(file.c_str(), GENERIC_READ | GENERIC_WRITE,
                            log.in_use ? FILE_SHARE_READ : 0, nullptr, CREATE_ALWAYS,
                            FILE_ATTRIBUTE_NORMAL, nullptr));
  const uint64_t ticks = virtual_notebook::FileTicks(std::chrono::seconds(seconds));
  const FILETIME time{.dwLowDateTime = static_cast<DWORD>(ticks),
                      .dwHighDateTime = static_cast<DWORD>(ticks >> 32U)};
  LARGE_INTEGER end{};
  end.QuadPart = static_cast<LONGLONG>(log.size);
  const std::string content = log.content.value_or(std::string());
  DWORD written = 0;
  if (handle.get() == INVALID_HANDLE_VALUE ||
      WriteFile(handle.get(), content.data(), static_cast<DWORD>(content.size()), &written,
                nullptr) == FALSE ||
      SetFilePointerEx(handle.get(), end, nullptr, FILE_BEGIN) == FALSE ||
      SetEndOfFile(handle.get()) == FALSE ||
      SetFileTime(handle.get(), nullptr, nullptr, &time) == FALSE) {
    throw std::runtime_error(file.string() + " cannot be made: error " +
                             std::to_string(GetLastError()));
  }
  return handle;
}

}  // namespace

// A service's variables are not this program's: the manager makes them afresh.
fs::path LogFolder() {
  void* block = nullptr;
  if (CreateEnvironmentBlock(&block, nullptr, FALSE) == FALSE) {
    throw std::runtime_error("the environment of services cannot be had: error " +
                             std::to_string(GetLastError()));
  }
  fs::path folder;
  for (auto* entry = static_cast<const wchar_t*>(block); *entry != L'\0';
       entry += std::wcslen(entry) + 1) {
    if (_wcsnicmp(entry, kRootVariable, std::wcslen(kRootVariable)) == 0) {
      folder = fs::path(entry + std::wcslen(kRootVariable)) / kLogFolder;
    }
  }
  DestroyEnvironmentBlock(block);
  if (folder.empty()) throw std::runtime_error("services have no variable \"programdata\"");
  const std::wstring normal = folder.lexically_normal().wstring();
  if (_wcsnicmp(normal.c_str(), L"C:\\", 3) != 0) {
    throw std::runtime_error("services' \"programdata\" leads out of the prefix, to " +
                             folder.string());
  }
  return folder;
}

std::vector<Handle> PutOldLogs(const fs::path& folder,
                               const std::vector<virtual_notebook::OldLog>& logs, int64_t now) {
  if (!logs.empty()) fs::create_directories(folder);
  std::vector<Handle> in_use;
  for (const virtual_notebook::OldLog& log : logs) {
    const int64_t seconds = now - std::chrono::duration_cast<std::chrono::seconds>(log.age).count();
    const fs::path file = log.name.empty() ? FreePath(folder, seconds) : folder / Wide(log.name);
    Handle handle = PutFile(file, log, seconds);
    if (log.in_use) in_use.push_back(std::move(handle));
  }
  return in_use;
}

}  // namespace nuvelta::wine
