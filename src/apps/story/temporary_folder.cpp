#include "apps/story/temporary_folder.h"

#include <cerrno>
#include <cstdlib>
#include <string>
#include <system_error>

namespace nuvelta::story {

namespace fs = std::filesystem;

TemporaryFolder::TemporaryFolder() {
  std::string name = (fs::temp_directory_path() / "virtual_notebook_XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) {
    throw fs::filesystem_error("cannot create a temporary folder", name,
                               std::error_code(errno, std::generic_category()));
  }
  m_path = name;
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  fs::remove_all(m_path, ignored);
}

}  // namespace nuvelta::story
