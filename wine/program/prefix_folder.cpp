#include "wine/program/prefix_folder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <string>
#include <string_view>

#include "wine/program/bad_input.h"

namespace nuvelta::wine_notebook {

namespace fs = std::filesystem;

namespace {

constexpr const char* kMarkFile = "wine_notebook.mark";
constexpr std::string_view kMark = "wine_notebook has made this folder and may empty it.\n";
constexpr std::string_view kWhole = "It is whole.\n";

constexpr const char* kExpected =
    "; expected a folder that wine_notebook has made, an empty one, or a name not in use";

enum class State { kMissing, kEmpty, kMarked };

[[noreturn]] void Refuse(const fs::path& path, const std::string& why) {
  throw BadInput("the prefix \"" + path.string() + "\" " + why + kExpected);
}

// What an open mark says, and a little more when it is too long for one.
std::string ReadMark(int mark) {
  std::array<char, kMark.size() + kWhole.size() + 1> text{};
  const ssize_t size = pread(mark, text.data(), text.size(), 0);
  return {text.data(), size > 0 ? static_cast<size_t>(size) : 0};
}

// What the mark in the folder says; none when it is missing or no plain file.
std::string MarkIn(const fs::path& folder) {
  const int mark =
      open((folder / kMarkFile).c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
  if (mark < 0) return {};
  struct stat about {};
  std::string text;
  if (fstat(mark, &about) == 0 && S_ISREG(about.st_mode)) text = ReadMark(mark);
  close(mark);
  return text;
}

bool IsMountPoint(const fs::path& folder) {
  struct statx about {};
  return statx(AT_FDCWD, folder.c_str(), AT_SYMLINK_NOFOLLOW, STATX_BASIC_STATS, &about) == 0 &&
         (about.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0;
}

// Whether there is nothing in it but, maybe, a mark whose writing was interrupted.
bool IsEmpty(const fs::path& folder) {
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
       entry.increment(error)) {
    struct stat about {};
    if (entry->path().filename() != kMarkFile || lstat(entry->path().c_str(), &about) != 0 ||
        !S_ISREG(about.st_mode) || about.st_size != 0) {
      return false;
    }
  }
  if (error) Refuse(folder, "cannot be read: " + error.message());
  return true;
}

// Refuses a name below what is no folder, or where nothing can be made.
void CheckAbove(const fs::path& path) {
  fs::path above = path.parent_path();
  struct stat about {};
  while (stat(above.c_str(), &about) != 0) {
    const int error = errno;
    if (lstat(above.c_str(), &about) == 0 || (error != ENOENT && error != ENOTDIR)) {
      Refuse(path, "cannot be made: " + above.string() + ": " + std::strerror(error));
    }
    above = above.parent_path();
  }
  if (!S_ISDIR(about.st_mode)) Refuse(path, "cannot be made: " + above.string() + " is no folder");
  if (access(above.c_str(), W_OK | X_OK) != 0) {
    Refuse(path, "cannot be made: " + above.string() + ": " + std::strerror(errno));
  }
}

// Only build/ is for what can be made again.
void CheckOutsideSources(const fs::path& path) {
  for (fs::path above = path.parent_path(); above != above.root_path();
       above = above.parent_path()) {
    std::error_code ignored;
    if (!fs::exists(above / "CMakePresets.json", ignored) ||
        !fs::exists(above / "wine/program", ignored)) {
      continue;
    }
    const fs::path below = path.lexically_relative(above);
    if (*below.begin() != "build" || below == "build") {
      Refuse(path, "lies among the project's sources and not below its build/");
    }
  }
}

// How it is now. Throws BadInput when it cannot be used.
State Inspect(const fs::path& path) {
  CheckOutsideSources(path);
  struct stat about {};
  if (lstat(path.c_str(), &about) != 0) {
    if (errno != ENOENT && errno != ENOTDIR) Refuse(path, std::strerror(errno));
    CheckAbove(path);
    return State::kMissing;
  }
  if (S_ISLNK(about.st_mode)) Refuse(path, "is a symbolic link");
  if (!S_ISDIR(about.st_mode)) Refuse(path, "is no folder");
  if (about.st_uid != geteuid()) Refuse(path, "belongs to another user");
  if (IsMountPoint(path)) Refuse(path, "is a mount point");
  if (access(path.c_str(), W_OK | X_OK) != 0) {
    Refuse(path, std::string("cannot be written: ") + std::strerror(errno));
  }
  if (MarkIn(path).starts_with(kMark)) return State::kMarked;
  if (!IsEmpty(path)) Refuse(path, "holds what wine_notebook has not put there");
  return State::kEmpty;
}

// Absolute, and without links above the last name, which is looked at as it is.
fs::path Resolve(const fs::path& path) {
  fs::path given = path;
  while (!given.has_filename() && given.has_parent_path() && given != given.root_path()) {
    given = given.parent_path();
  }
  const fs::path name = given.filename();
  if (name.empty() || name == "." || name == "..") Refuse(path, "names no folder of its own");
  std::error_code error;
  const fs::path folder = fs::weakly_canonical(fs::absolute(given).parent_path(), error);
  if (error) Refuse(path, "cannot be made: " + error.message());
  return folder / name;
}

}  // namespace

fs::path PrefixFolder::Usable(const fs::path& path) {
  fs::path resolved = Resolve(path);
  Inspect(resolved);
  return resolved;
}

PrefixFolder::PrefixFolder(const fs::path& path) : m_path(Usable(path)) {
  std::error_code error;
  fs::create_directories(m_path, error);
  if (error) Refuse(m_path, "cannot be made: " + error.message());
  m_mark = open((m_path / kMarkFile).c_str(),
                O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0644);
  if (m_mark < 0) Refuse(m_path, std::string("cannot be marked: ") + std::strerror(errno));
  try {
    if (flock(m_mark, LOCK_EX | LOCK_NB) != 0) {
      throw std::runtime_error(m_path.string() + " is in use by another wine_notebook");
    }
    // Nobody else marks it now.
    if (Inspect(m_path) != State::kMarked) WriteMark(false);
  } catch (...) {
    close(m_mark);
    throw;
  }
}

PrefixFolder::~PrefixFolder() { close(m_mark); }

bool PrefixFolder::IsWhole() const {
  return ReadMark(m_mark) == std::string(kMark) + std::string(kWhole);
}

void PrefixFolder::SetWhole() { WriteMark(true); }

void PrefixFolder::Empty() {
  WriteMark(false);
  for (const auto& entry : fs::directory_iterator(m_path)) {
    if (entry.path().filename() != kMarkFile) fs::remove_all(entry.path());
  }
}

// The first line, once there, stays: a mark is one at any moment.
void PrefixFolder::WriteMark(bool whole) {
  const std::string text = std::string(kMark) + std::string(whole ? kWhole : "");
  if (pwrite(m_mark, text.data(), text.size(), 0) != static_cast<ssize_t>(text.size()) ||
      ftruncate(m_mark, static_cast<off_t>(text.size())) != 0 || fsync(m_mark) != 0) {
    throw std::runtime_error(m_path.string() + " cannot be marked: " + std::strerror(errno));
  }
}

}  // namespace nuvelta::wine_notebook
