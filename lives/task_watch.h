// The queue and its one task, followed from outside: what was granted and spent is
// summed up apart from the service, and compared with its queue at every step.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "lives/findings.h"

namespace nuvelta::explore {

// With more than these a task is not run again: the service restarts.
inline constexpr int32_t kMostExceptions = 3;

// One queued task as it is between two steps.
struct TaskState {
  int32_t retry_times = 0;
  int32_t exceptions = 0;
  bool dealing = false;
};

class TaskWatch {
 public:
  explicit TaskWatch(Findings& findings) : m_findings(findings) {}

  // The worker has begun, on this thread.
  void OnWorker(uint32_t thread);
  // A task was added: new, or as a top-up of the queued one.
  void OnAdded();
  // The queue was cleaned.
  void OnCleaned();
  // The worker pauses; the length tells a retry from a finished run.
  void OnPause(uint32_t thread, uint32_t milliseconds);
  void OnPauseEnds(uint32_t thread);
  // The thread is about to take the task lock.
  void OnLock(uint32_t thread);
  // The worker is about to wait for a task.
  void OnWait() { m_looks = 0; }

  // The queue as `thread` leaves it at the end of its turn.
  void OnStep(uint32_t thread, std::span<const TaskState> queue);

  bool IsWorker(uint32_t thread) const { return thread == m_worker; }
  bool IsRunning() const { return m_running; }
  uint64_t Runs() const { return m_runs; }
  uint64_t Retries() const { return m_retries; }
  uint64_t GiveUps() const { return m_give_ups; }

 private:
  void Follow(uint32_t thread, const TaskState& state);
  void FollowRun(const TaskState& state);
  void FollowRemoval(uint32_t thread);

  Findings& m_findings;
  uint32_t m_worker = 0;
  std::optional<TaskState> m_task;  // as it should be
  bool m_running = false;
  bool m_pausing = false;
  bool m_finished = false;  // the last run wants no other
  bool m_spent = false;     // the budget was spent as the worker last looked at it
  uint64_t m_runs = 0;
  uint64_t m_retries = 0;
  uint64_t m_give_ups = 0;
  bool m_removal_due = false;  // of a task that has finished
  int m_looks = 0;             // how often the worker has taken the lock since its last rest
};

}  // namespace nuvelta::explore
