// The task engine as its log tells it: one task at most, its budget the sum of what
// was granted and spent, one run at a time.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "lives/findings.h"
#include "support/line_kinds.h"
#include "support/log_lines.h"

namespace nuvelta::explore {

using support::LogLine;

class TaskRules {
 public:
  // When threads run at once, a top-up and the worker's own count can be written in
  // the other order than they were made; then only the printed list is exact.
  enum class Order { kExact, kLoose };

  TaskRules(Findings& findings, Order order)
      : m_findings(&findings), m_loose(order == Order::kLoose) {}

  void Take(const LogLine& line);

 private:
  struct Task {
    int64_t retry_times = 30;
    int exceptions = 0;
  };

  void Begin();
  void TakeQueue(std::string_view text);
  void TakeRun(const LogLine& line);
  void TakeWorker(std::string_view text);
  void BeginRun(std::string_view thread);
  void EndRun();
  void ExpectBudget(int64_t logged, int64_t slack);
  void Expect(bool holds, const char* rule);

  Findings* m_findings;
  bool m_loose;
  std::string_view m_text;  // the line at hand
  support::LineKind m_kind{};
  std::optional<Task> m_task;
  bool m_level = false;        // the queue's one level exists
  bool m_cleaned = false;      // since the last printed list
  std::string_view m_worker;   // the thread of the run
  bool m_running = false;      // between entry and end of a run
  bool m_at_commands = false;  // the run talks to the modem
  bool m_raised = false;       // an exception came out of the commands
  bool m_wants_retry = false;  // what the run asked for
  bool m_ended = false;        // a run is over, its task not yet dealt with
  bool m_given_up = false;     // the task was given up
};

}  // namespace nuvelta::explore
