#include "notebook/story/marked_folder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>
#include <utility>

namespace nuvelta::story {

namespace fs = std::filesystem;

namespace {

constexpr const char* kMark = ".virtual_notebook";

[[noreturn]] void Fail(const char* what, const fs::path& path, int error) {
  throw fs::filesystem_error(what, path, std::error_code(error, std::generic_category()));
}

int Open(const fs::path& path) {
  return open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
}

// The lock goes with the process, however that ends. Where a file system has no locks
// nobody is kept out.
bool Hold(int descriptor) {
  return flock(descriptor, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}

bool HasMark(int descriptor) {
  struct stat status {};
  return fstatat(descriptor, kMark, &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISREG(status.st_mode);
}

}  // namespace

MarkedFolder::State MarkedFolder::Look(const fs::path& path) {
  const int descriptor = open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor < 0) return errno == ENOENT ? State::kFree : State::kForeign;
  State state = State::kForeign;
  if (HasMark(descriptor)) state = Hold(descriptor) ? State::kFree : State::kHeld;
  close(descriptor);
  return state;
}

// The mark comes last: who finds it without the lock finds what nobody uses any more.
MarkedFolder::MarkedFolder(fs::path path)
    : m_path(std::move(path)),
      m_descriptor(open(m_path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
  if (m_descriptor < 0) Fail("cannot be opened", m_path, errno);
  int error = Hold(m_descriptor) ? 0 : EBUSY;
  if (error == 0) {
    const int mark = openat(m_descriptor, kMark, O_WRONLY | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0644);
    if (mark < 0) error = errno;
    if (mark >= 0) close(mark);
  }
  if (error == 0) return;
  close(m_descriptor);
  Fail(error == EBUSY ? "another run is using it" : "cannot be written", m_path, error);
}

MarkedFolder::~MarkedFolder() { close(m_descriptor); }

void MarkedFolder::Remove(const fs::path& path) {
  std::error_code ignored;
  for (const auto& entry : fs::directory_iterator(path, ignored)) {
    if (entry.path().filename() != kMark) fs::remove_all(entry.path(), ignored);
  }
  fs::remove_all(path, ignored);
}

void MarkedFolder::RemoveLeftOver(const fs::path& parent, const std::string& prefix) {
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(parent, error)) {
    if (!entry.path().filename().string().starts_with(prefix)) continue;
    const int descriptor = Open(entry.path());
    if (descriptor < 0) continue;
    struct stat status {};
    // Never without a lock: where there are none, all would look left over.
    const bool left_over = fstat(descriptor, &status) == 0 && status.st_uid == geteuid() &&
                           HasMark(descriptor) && flock(descriptor, LOCK_EX | LOCK_NB) == 0;
    if (left_over) Remove(entry.path());
    close(descriptor);
  }
}

}  // namespace nuvelta::story
