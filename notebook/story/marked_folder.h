// A folder that carries the mark of these programs, and is held by this process:
// only such a folder is ever emptied or removed.
#pragma once

#include <filesystem>
#include <string>

namespace nuvelta::story {

class MarkedFolder {
 public:
  enum class State {
    kFree,     // there is none, or it carries the mark and nobody holds it
    kHeld,     // by another process
    kForeign,  // without the mark
  };

  // What `path` is, told without holding it. A folder that does not exist is free.
  static State Look(const std::filesystem::path& path);

  // Holds the folder `path`, which exists, and puts the mark into it when it has none.
  // Nobody else holds it until this object goes. Throws
  // std::filesystem::filesystem_error, with std::errc::device_or_resource_busy when
  // another process holds it.
  explicit MarkedFolder(std::filesystem::path path);
  ~MarkedFolder();
  MarkedFolder(const MarkedFolder&) = delete;
  MarkedFolder& operator=(const MarkedFolder&) = delete;

  const std::filesystem::path& Path() const { return m_path; }

  // Removes what the folder holds, the mark last, and the folder.
  static void Remove(const std::filesystem::path& path);
  // Removes those of the folders in `parent` whose name begins with `prefix` that
  // carry the mark, are this user's, and that nobody holds any more.
  static void RemoveLeftOver(const std::filesystem::path& parent, const std::string& prefix);

 private:
  const std::filesystem::path m_path;
  int m_descriptor;
};

}  // namespace nuvelta::story
