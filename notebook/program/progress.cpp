#include "notebook/program/progress.h"

#include <unistd.h>

#include <utility>

namespace nuvelta::story {

using namespace std::chrono_literals;

Progress::Progress(std::string name)
    : Progress(std::move(name), stderr, isatty(STDERR_FILENO) != 0 ? 10s : 60s) {}

Progress::Progress(std::string name, std::FILE* out, std::chrono::nanoseconds interval)
    : m_name(std::move(name)), m_out(out), m_interval(interval) {}

void Progress::Tell(std::chrono::nanoseconds story_time) {
  using Seconds = std::chrono::duration<double>;
  const auto now = std::chrono::steady_clock::now();
  if (now < m_next) return;
  m_next = now + m_interval;
  std::fprintf(m_out, "%s: playing for %.0f s, %.0f s into the story\n", m_name.c_str(),
               Seconds(now - m_begin).count(), Seconds(story_time).count());
}

}  // namespace nuvelta::story
