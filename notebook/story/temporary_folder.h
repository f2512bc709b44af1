// A folder of the process's own that goes, with all in it, when the object goes.
#pragma once

#include <filesystem>
#include <optional>

#include "notebook/story/marked_folder.h"

namespace nuvelta::story {

// For programs that play many stories, whose files are small: where nothing else is
// asked for, such folders lie in the memory.
void PreferFoldersInMemory();

class TemporaryFolder {
 public:
  // The first one of a process also removes what processes that were killed have
  // left. Throws std::filesystem::filesystem_error when it cannot be created.
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  const std::filesystem::path& Path() const { return m_folder->Path(); }

 private:
  std::optional<MarkedFolder> m_folder;
};

}  // namespace nuvelta::story
