// Follows the log files of a folder while they are written and rotated.
#pragma once

#include <atomic>
#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <thread>

namespace nuvelta::story {

class LogFollower {
 public:
  // Hands every new piece of text to `print`, on a thread of its own, until the
  // object goes; by then all that had been written is handed over. `begin`: see
  // LogFilesSince.
  LogFollower(std::filesystem::path folder, std::string begin,
              std::function<void(const std::string&)> print);
  ~LogFollower();
  LogFollower(const LogFollower&) = delete;
  LogFollower& operator=(const LogFollower&) = delete;

 private:
  void Follow();
  void ReadOnce();

  const std::filesystem::path m_folder;
  const std::string m_begin;
  const std::function<void(const std::string&)> m_print;
  std::map<uint64_t, uint64_t> m_read;  // bytes read, by the file's inode
  std::atomic<bool> m_done = false;
  std::thread m_thread;
};

}  // namespace nuvelta::story
