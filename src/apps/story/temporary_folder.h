// A folder of the process's own that goes, with all in it, when the object goes.
#pragma once

#include <filesystem>

namespace nuvelta::story {

class TemporaryFolder {
 public:
  // Throws std::filesystem::filesystem_error when it cannot be created.
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  const std::filesystem::path& Path() const { return m_path; }

 private:
  std::filesystem::path m_path;
};

}  // namespace nuvelta::story
