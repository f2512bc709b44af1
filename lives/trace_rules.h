// Entry and exit lines nest, thread by thread, but for the places at which an exit
// line is missing, written twice, or written without an entry.
#pragma once

#include <map>
#include <string_view>
#include <vector>

#include "lives/findings.h"
#include "support/log_lines.h"

namespace nuvelta::explore {

using support::LogLine;

class TraceRules {
 public:
  explicit TraceRules(Findings& findings) : m_findings(findings) {}

  void Take(const LogLine& line);
  // The log's end. A process that tells of its end has left its main function's scope;
  // threads that it did not wait for may end with it anywhere.
  void Finish();
  // The scope that the thread's next line is written in, empty for none.
  std::string_view Innermost(std::string_view thread) const;

 private:
  struct Scope {
    std::string_view name;
    bool exits_twice = false;
  };
  struct Thread {
    std::vector<Scope> scopes;
    bool owes_exit = false;  // IsDisableVerify's, which has no entry line
  };

  void Enter(Thread& thread, std::string_view name);
  void Exit(Thread& thread, std::string_view name);
  void TakeMessage(Thread& thread, std::string_view text);
  void CheckPlace(const Thread& thread, std::string_view name);
  void Break(const char* rule, std::string_view name);

  Findings& m_findings;
  std::map<std::string_view, Thread> m_threads;
  bool m_constructed = false;
  bool m_watcher_set_up = false;
  bool m_returned = false;  // the process told of its end
};

}  // namespace nuvelta::explore
