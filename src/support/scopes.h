// The trace scopes of a log's threads, paired from their entries and exits.
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace nuvelta::support {

enum class ScopeEnd : uint8_t {
  kExit,     // its own line
  kMissing,  // it ended unseen: the exit line is missing on purpose, or was lost
  kOpen,     // the log ends in it
};

struct Scope {
  std::string name;  // fit to be printed
  std::string thread;
  uint64_t begin = 0;  // indexes of its lines
  uint64_t end = 0;
  uint32_t depth = 0;
  ScopeEnd how = ScopeEnd::kExit;
};

// Pairs the lines of one process.
class ScopeReader {
 public:
  // A line "h : + NAME" or "h : - NAME", or any other of the thread.
  void Take(std::string_view thread, std::string_view text, uint64_t at, std::deque<Scope>& ended);
  // The process's log ends before the line `end`.
  void Finish(uint64_t end, std::deque<Scope>& ended);

 private:
  struct Thread {
    std::vector<Scope> open;  // the outermost first
    uint64_t last = 0;        // the line before
  };

  static void Leave(Thread& thread, std::string_view name, uint64_t at, std::deque<Scope>& ended);
  static void Close(Thread& thread, size_t depth, uint64_t at, ScopeEnd how,
                    std::deque<Scope>& ended);

  std::map<std::string, Thread, std::less<>> m_threads;
};

}  // namespace nuvelta::support
