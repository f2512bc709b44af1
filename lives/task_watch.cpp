#include "lives/task_watch.h"

#include <string>
#include <utility>

namespace nuvelta::explore {

namespace {

constexpr int32_t kFirstRetryTimes = 30;
constexpr uint32_t kPauseBeforeRetry = 2000;  // milliseconds
constexpr uint32_t kPauseAfterRun = 500;      // milliseconds
constexpr int kLooksBeforeRun = 2;

}  // namespace

void TaskWatch::OnWorker(uint32_t thread) {
  m_findings.Expect(m_worker == 0, "a second worker");
  m_worker = thread;
}

void TaskWatch::OnAdded() {
  if (!m_task) {
    m_task = TaskState{.retry_times = kFirstRetryTimes};
  } else {
    m_task->retry_times += m_task->retry_times == 0 ? 1 : 2;
  }
}

void TaskWatch::OnCleaned() {
  if (m_task) m_task->retry_times = 0;
}

void TaskWatch::OnPause(uint32_t thread, uint32_t milliseconds) {
  if (thread != m_worker) return;
  m_pausing = true;
  m_looks = 0;
  m_removal_due = m_running && milliseconds == kPauseAfterRun;
  if (milliseconds == kPauseBeforeRetry && m_task) {
    ++m_retries;
    --m_task->retry_times;
  } else {
    m_findings.Expect(milliseconds == kPauseAfterRun, "a pause of an unknown length");
    m_finished = true;
  }
}

void TaskWatch::OnPauseEnds(uint32_t thread) {
  if (thread == m_worker) m_pausing = false;
}

// The worker takes the lock to look for a task and to list the queue; behind that it runs
// the task, restarts the service, or gives the task up, for which it takes the lock again.
void TaskWatch::OnLock(uint32_t thread) {
  if (thread != m_worker || std::exchange(m_removal_due, false)) return;
  if (++m_looks <= kLooksBeforeRun) return;
  const bool restarts = m_task && m_task->exceptions > kMostExceptions;
  m_looks = restarts ? 1 : 0;  // a restart that was refused is followed by another look
  m_give_ups += restarts ? 0 : 1;
}

void TaskWatch::FollowRemoval(uint32_t thread) {
  m_findings.Expect(thread == m_worker, "another thread than the worker removed the task");
  m_findings.Expect(!m_running, "a task is removed while it runs");
  // A top-up that comes between the worker's look at the budget and the removal is
  // lost with the task.
  m_findings.Expect(m_finished || m_spent,
                    "a task is removed that has neither finished nor spent its budget");
  m_task.reset();
  m_finished = m_spent = false;
}

void TaskWatch::FollowRun(const TaskState& state) {
  if (state.dealing && !m_running) {
    ++m_runs;
    m_finished = false;
    m_findings.Expect(m_task->retry_times > 0, "a run without a budget");
    m_findings.Expect(m_task->exceptions <= kMostExceptions, "a run after four exceptions");
  }
  m_running = state.dealing;
  m_findings.Expect(!m_running || !m_pausing, "a task is dealing while the worker pauses");
}

void TaskWatch::Follow(uint32_t thread, const TaskState& state) {
  // A run that ended in an exception has one more, and a budget raised by 2.
  if (state.exceptions == m_task->exceptions + 1 && thread == m_worker) {
    ++m_task->exceptions;
    m_task->retry_times += 2;
  }
  m_findings.Expect(state.exceptions == m_task->exceptions, "an exception count from nowhere");
  if (state.retry_times != m_task->retry_times) {
    m_findings.Add("the retry budget is " + std::to_string(state.retry_times) +
                   ", but granted and spent make " + std::to_string(m_task->retry_times));
  }
  FollowRun(state);
  if (thread == m_worker) m_spent = state.retry_times <= 0;
  *m_task = state;
}

void TaskWatch::OnStep(uint32_t thread, std::span<const TaskState> queue) {
  if (queue.size() > 1) m_findings.Add(std::to_string(queue.size()) + " tasks are queued at once");
  if (queue.empty()) {
    if (m_task) FollowRemoval(thread);
    return;
  }
  if (!m_task) {
    m_findings.Add("a task is queued that nobody added");
    m_task = queue.front();
  }
  Follow(thread, queue.front());
}

}  // namespace nuvelta::explore
