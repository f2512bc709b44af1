#include "notebook/story/temporary_folder.h"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <mutex>
#include <string>
#include <system_error>

namespace nuvelta::story {

namespace fs = std::filesystem;

namespace {

constexpr const char* kFolderPrefix = "virtual_notebook_";

}  // namespace

void PreferFoldersInMemory() {
  std::error_code ignored;
  if (std::getenv("TMPDIR") == nullptr && fs::is_directory("/dev/shm", ignored)) {
    setenv("TMPDIR", "/dev/shm", 1);
  }
}

TemporaryFolder::TemporaryFolder() {
  const fs::path parent = fs::temp_directory_path();
  static std::once_flag cleaned;
  std::call_once(cleaned, [&] { MarkedFolder::RemoveLeftOver(parent, kFolderPrefix); });
  std::string name = (parent / (std::string(kFolderPrefix) + "XXXXXX")).string();
  if (mkdtemp(name.data()) == nullptr) {
    throw fs::filesystem_error("cannot create a temporary folder", name,
                               std::error_code(errno, std::generic_category()));
  }
  try {
    m_folder.emplace(name);
  } catch (...) {
    rmdir(name.c_str());
    throw;
  }
}

TemporaryFolder::~TemporaryFolder() { MarkedFolder::Remove(Path()); }

}  // namespace nuvelta::story
