#include "apps/virtual_notebook/log_follower.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <vector>

#include "apps/story/log_files.h"

namespace nuvelta::story {

namespace {

constexpr std::chrono::milliseconds kInterval{10};

// An open file, known by its inode, which rotation does not change.
struct OpenLog {
  int descriptor = -1;
  uint64_t inode = 0;
};

std::vector<OpenLog> OpenAll(const std::vector<std::filesystem::path>& files) {
  std::vector<OpenLog> open_logs;
  for (const auto& file : files) {
    const int descriptor = open(file.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat status {};
    if (descriptor < 0 || fstat(descriptor, &status) != 0) continue;
    open_logs.push_back({descriptor, status.st_ino});
  }
  return open_logs;
}

}  // namespace

LogFollower::LogFollower(std::filesystem::path folder, std::string begin,
                         std::function<void(const std::string&)> print)
    : m_folder(std::move(folder)),
      m_begin(std::move(begin)),
      m_print(std::move(print)),
      m_thread([this] { Follow(); }) {}

LogFollower::~LogFollower() {
  m_done = true;
  m_thread.join();
  ReadOnce();
}

void LogFollower::Follow() {
  while (!m_done) {
    ReadOnce();
    std::this_thread::sleep_for(kInterval);
  }
}

void LogFollower::ReadOnce() {
  const auto files = LogFilesSince(m_folder, m_begin);
  const std::vector<OpenLog> open_logs = OpenAll(files);
  // A rotation in between would mix up the order: the next look has it right.
  const bool stable = files == LogFilesSince(m_folder, m_begin);
  for (const OpenLog& log : open_logs) {
    std::array<char, 16384> buffer{};
    ssize_t size = 0;
    while (stable && (size = pread(log.descriptor, buffer.data(), buffer.size(),
                                   static_cast<off_t>(m_read[log.inode]))) > 0) {
      m_read[log.inode] += static_cast<uint64_t>(size);
      m_print({buffer.data(), static_cast<size_t>(size)});
    }
    close(log.descriptor);
  }
}

}  // namespace nuvelta::story
