// A folder that this program has made for itself and may therefore empty. A mark in
// it tells so; what carries none belongs to somebody else.
#pragma once

#include <filesystem>

namespace nuvelta::wine_notebook {

class PrefixFolder {
 public:
  // The absolute path of a folder that can be used: a marked one that is there, or one
  // that can be made, there being nothing yet, or an empty folder. Changes nothing.
  // Refused are also what is no folder of this user's, a symbolic link, a mount point
  // and a place among the project's sources. Throws BadInput.
  static std::filesystem::path Usable(const std::filesystem::path& path);

  // Makes and marks it when that has not been done, and holds it for this process
  // alone. Throws BadInput, or std::runtime_error when another process holds it.
  explicit PrefixFolder(const std::filesystem::path& path);
  ~PrefixFolder();
  PrefixFolder(const PrefixFolder&) = delete;
  PrefixFolder& operator=(const PrefixFolder&) = delete;

  const std::filesystem::path& Path() const { return m_path; }

  // Whether the mark says that what the folder is to hold is all there.
  bool IsWhole() const;
  // Notes that it is. Throws std::runtime_error.
  void SetWhole();
  // Removes all but the mark, which no longer says so. Throws std::runtime_error.
  void Empty();

 private:
  void WriteMark(bool whole);

  std::filesystem::path m_path;
  int m_mark = -1;  // the open mark, locked
};

}  // namespace nuvelta::wine_notebook
