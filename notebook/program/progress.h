// Tells on standard error, now and then, that a long story is still being played.
#pragma once

#include <chrono>
#include <cstdio>
#include <string>

namespace nuvelta::story {

class Progress {
 public:
  // Speaks every ten seconds of real time on a terminal, and every minute elsewhere.
  explicit Progress(std::string name);
  Progress(std::string name, std::FILE* out, std::chrono::nanoseconds interval);

  // To be called often, by one thread at a time.
  void Tell(std::chrono::nanoseconds story_time);

 private:
  const std::string m_name;
  std::FILE* m_out;
  const std::chrono::nanoseconds m_interval;
  const std::chrono::steady_clock::time_point m_begin = std::chrono::steady_clock::now();
  std::chrono::steady_clock::time_point m_next = m_begin + m_interval;
};

}  // namespace nuvelta::story
