// The virtual notebook's disk: real files below a folder of the host.
#pragma once

#include <filesystem>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "notebook/machine/context.h"
#include "notebook/model/scenario.h"
#include "platform/files.h"

namespace nuvelta::virtual_notebook {

class VirtualFiles final : public platform::Files {
 public:
  VirtualFiles(Context& context, std::filesystem::path root)
      : m_context(context), m_root(std::move(root)) {}

  int _mkdir(const std::string& path) override;
  platform::FindHandle FindFirstFileA(const std::string& pattern,
                                      platform::FindData& data) override;
  bool FindNextFileA(platform::FindHandle find, platform::FindData& data) override;
  bool FindClose(platform::FindHandle find) noexcept override;
  bool DeleteFileA(const std::string& path) override;
  std::string LibraryPath(const std::string& path) override;

  // Lays down the old logs of the story in `folder` (a path of the notebook).
  void PutOldLogs(const std::string& folder, const std::vector<OldLog>& logs,
                  const std::string& name_prefix, const std::string& name_suffix);
  // A file that the process writes keeps the size and time that its directory
  // entry had when the process began, until the process ends, as on NTFS.
  void BeginProcess(const std::string& folder);
  void EndProcess();
  size_t OpenHandles() const;

  std::filesystem::path HostPath(const std::string& path) const;

 private:
  struct Entry {
    uint64_t size = 0;
    int64_t seconds = 0;  // last write, since 1970
  };
  struct Search {
    std::vector<platform::FindData> found;
    size_t next = 0;
  };

  platform::FindData Describe(const std::filesystem::path& file) const;
  void Stamp(const std::filesystem::path& file, int64_t seconds) const;
  int64_t Seconds() const;

  Context& m_context;
  const std::filesystem::path m_root;
  mutable std::mutex m_mutex;
  std::filesystem::path m_folder;
  std::map<std::string, Entry> m_entries;  // of m_folder, by name
  int64_t m_begin = 0;
  std::set<std::string> m_in_use;
  std::map<uintptr_t, Search> m_searches;
  uintptr_t m_next_handle = 0x4000;
};

}  // namespace nuvelta::virtual_notebook
