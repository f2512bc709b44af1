#include "notebook/machine/virtual_files.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <stdexcept>

#include "notebook/model/file_time.h"
#include "notebook/model/log_names.h"
#include "notebook/model/unicode.h"

namespace nuvelta::virtual_notebook {

namespace fs = std::filesystem;

namespace {

constexpr uint32_t kErrorSharingViolation = 32;

}  // namespace

fs::path VirtualFiles::HostPath(const std::string& path) const {
  fs::path host = m_root;
  std::string element;
  const auto add = [&] {
    std::erase(element, ':');
    if (!element.empty() && element != "." && element != "..") host /= element;
    element.clear();
  };
  for (const char letter : path) {
    if (letter == '\\' || letter == '/') {
      add();
    } else {
      element += letter;
    }
  }
  add();
  return host;
}

int VirtualFiles::_mkdir(const std::string& path) {
  if (m_context.Fails("_mkdir")) return -1;
  std::error_code error;
  return fs::create_directory(HostPath(path), error) ? 0 : -1;
}

std::string VirtualFiles::LibraryPath(const std::string& path) { return HostPath(path).string(); }

int64_t VirtualFiles::Seconds() const {
  return std::chrono::duration_cast<std::chrono::seconds>(m_context.scheduler.Now()).count();
}

platform::FindData VirtualFiles::Describe(const fs::path& file) const {
  Entry entry{.size = 0, .seconds = m_begin};
  const auto known = m_entries.find(file.filename().string());
  if (known != m_entries.end()) entry = known->second;
  return {.ftLastWriteTime = FileTicks(std::chrono::seconds(entry.seconds)),
          .nFileSizeHigh = static_cast<uint32_t>(entry.size >> 32U),
          .nFileSizeLow = static_cast<uint32_t>(entry.size),
          .cFileName = file.filename().string()};
}

platform::FindHandle VirtualFiles::FindFirstFileA(const std::string& pattern,
                                                  platform::FindData& data) {
  const auto invalid = platform::InvalidHandle<platform::FindHandle>();
  if (m_context.Fails("FindFirstFileA")) return invalid;
  const size_t slash = pattern.rfind('\\');
  const size_t star = pattern.rfind('*');
  if (slash == std::string::npos || star == std::string::npos || star < slash) return invalid;
  const std::string prefix = Folded(pattern.substr(slash + 1, star - slash - 1));
  const std::string suffix = Folded(pattern.substr(star + 1));

  const std::lock_guard lock(m_mutex);
  Search search;
  std::error_code error;
  for (const auto& file : fs::directory_iterator(HostPath(pattern.substr(0, slash)), error)) {
    const std::string name = Folded(file.path().filename().string());
    if (name.size() < prefix.size() + suffix.size()) continue;
    if (name.starts_with(prefix) && name.ends_with(suffix)) {
      search.found.push_back(Describe(file.path()));
    }
  }
  if (search.found.empty()) {
    Context::SetLastError(error ? platform::kErrorPathNotFound : platform::kErrorFileNotFound);
    return invalid;
  }
  std::ranges::sort(search.found, {}, [](const auto& found) { return Folded(found.cFileName); });
  data = search.found.front();
  search.next = 1;
  m_searches.emplace(m_next_handle, std::move(search));
  return static_cast<platform::FindHandle>(m_next_handle++);
}

bool VirtualFiles::FindNextFileA(platform::FindHandle find, platform::FindData& data) {
  if (m_context.Fails("FindNextFileA")) return false;
  const std::lock_guard lock(m_mutex);
  const auto search = m_searches.find(static_cast<uintptr_t>(find));
  if (search == m_searches.end() || search->second.next == search->second.found.size()) {
    Context::SetLastError(platform::kErrorNoMoreFiles);
    return false;
  }
  data = search->second.found[search->second.next++];
  return true;
}

bool VirtualFiles::FindClose(platform::FindHandle find) noexcept {
  const std::lock_guard lock(m_mutex);
  return m_searches.erase(static_cast<uintptr_t>(find)) != 0;
}

bool VirtualFiles::DeleteFileA(const std::string& path) {
  if (m_context.Fails("DeleteFileA")) return false;
  const fs::path host = HostPath(path);
  const std::string name = host.filename().string();
  const std::lock_guard lock(m_mutex);
  std::error_code error;
  const bool own = host.parent_path() == m_folder && !m_entries.contains(name);
  if (!fs::exists(host, error)) {
    Context::SetLastError(platform::kErrorFileNotFound);
  } else if (fs::is_directory(host, error)) {
    Context::SetLastError(platform::kErrorAccessDenied);
  } else if (own || m_in_use.contains(name)) {
    Context::SetLastError(kErrorSharingViolation);
  } else if (fs::remove(host, error)) {
    return true;
  } else {
    Context::SetLastError(platform::kErrorAccessDenied);
  }
  return false;
}

void VirtualFiles::Stamp(const fs::path& file, int64_t seconds) const {
  const std::array<timespec, 2> times{
      {{.tv_sec = seconds, .tv_nsec = 0}, {.tv_sec = seconds, .tv_nsec = 0}}};
  utimensat(AT_FDCWD, file.c_str(), times.data(), 0);
}

void VirtualFiles::PutOldLogs(const std::string& folder, const std::vector<OldLog>& logs,
                              const std::string& name_prefix, const std::string& name_suffix) {
  const fs::path host = HostPath(folder);
  // A folder that no disk takes is the service's to find out.
  std::error_code error;
  fs::create_directories(host, error);
  for (const auto& file : fs::directory_iterator(host, error)) {
    const std::string name = file.path().filename().string();
    if (name.starts_with(name_prefix) && name.ends_with(name_suffix)) fs::remove(file.path());
  }
  for (const OldLog& log : logs) {
    const int64_t seconds =
        Seconds() - std::chrono::duration_cast<std::chrono::seconds>(log.age).count();
    std::string name = log.name;
    // Two logs of one age are begun a second apart.
    for (time_t begun = seconds; name.empty() || (log.name.empty() && fs::exists(host / name));
         --begun) {
      std::tm local{};
      localtime_r(&begun, &local);
      name = LogNameOf(name_prefix, local, name_suffix);
    }
    const fs::path file = host / name;
    {
      std::ofstream stream(file, std::ios::trunc | std::ios::binary);
      if (log.content) stream << *log.content;
    }
    fs::resize_file(file, log.size);
    Stamp(file, seconds);
    if (log.in_use) m_in_use.insert(name);
  }
}

void VirtualFiles::BeginProcess(const std::string& folder) {
  const std::lock_guard lock(m_mutex);
  m_folder = HostPath(folder);
  m_begin = Seconds();
  m_entries.clear();
  std::error_code error;
  for (const auto& file : fs::directory_iterator(m_folder, error)) {
    struct stat status {};
    if (stat(file.path().c_str(), &status) != 0) continue;
    m_entries[file.path().filename().string()] = {.size = static_cast<uint64_t>(status.st_size),
                                                  .seconds = status.st_mtime};
  }
}

void VirtualFiles::EndProcess() {
  const std::lock_guard lock(m_mutex);
  m_searches.clear();
  std::error_code error;
  for (const auto& file : fs::directory_iterator(m_folder, error)) {
    struct stat status {};
    if (stat(file.path().c_str(), &status) != 0) continue;
    const auto known = m_entries.find(file.path().filename().string());
    const bool untouched =
        known != m_entries.end() && known->second.size == static_cast<uint64_t>(status.st_size);
    if (!untouched) Stamp(file.path(), Seconds());
  }
}

size_t VirtualFiles::OpenHandles() const {
  const std::lock_guard lock(m_mutex);
  return m_searches.size();
}

}  // namespace nuvelta::virtual_notebook
