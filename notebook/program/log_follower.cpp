#include "notebook/program/log_follower.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <utility>
#include <vector>

#include "notebook/story/log_files.h"

namespace nuvelta::story {

namespace {

constexpr std::chrono::milliseconds kInterval{10};

// An open file, known by its inode, which rotation does not change.
struct OpenLog {
  int descriptor = -1;
  uint64_t inode = 0;
  uint64_t size = 0;
};

std::vector<OpenLog> OpenAll(const std::vector<std::filesystem::path>& files) {
  std::vector<OpenLog> open_logs;
  for (const auto& file : files) {
    const int descriptor = open(file.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat status {};
    if (descriptor < 0) continue;
    if (fstat(descriptor, &status) == 0) {
      open_logs.push_back({descriptor, status.st_ino, static_cast<uint64_t>(status.st_size)});
    } else {
      close(descriptor);
    }
  }
  return open_logs;
}

// Whether the files still are, in this order, the ones that were opened.
bool AreStill(const std::vector<OpenLog>& open_logs,
              const std::vector<std::filesystem::path>& files) {
  return std::ranges::equal(open_logs, files, [](const OpenLog& log, const auto& file) {
    struct stat status {};
    return stat(file.c_str(), &status) == 0 && status.st_ino == log.inode;
  });
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
  const std::vector<OpenLog> open_logs = OpenAll(LogFilesSince(m_folder, m_begin));
  // A rotation in between would mix up the order: the next look has it right.
  const bool stable = AreStill(open_logs, LogFilesSince(m_folder, m_begin));
  std::map<uint64_t, uint64_t> read;
  for (const OpenLog& log : open_logs) {
    uint64_t& done = read[log.inode];
    done = m_read[log.inode];
    // Rotation deletes the oldest file, whose inode a new one may get.
    if (log.size < done) done = 0;
    std::array<char, 16384> buffer{};
    ssize_t size = 0;
    while (stable && (size = pread(log.descriptor, buffer.data(), buffer.size(),
                                   static_cast<off_t>(done))) > 0) {
      done += static_cast<uint64_t>(size);
      m_print({buffer.data(), static_cast<size_t>(size)});
    }
    close(log.descriptor);
  }
  if (stable) m_read = std::move(read);
}

}  // namespace nuvelta::story
