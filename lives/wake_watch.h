// No trigger is lost: the worker does not wait for a task event that nobody will set
// while a task is queued.
#pragma once

#include <cstdint>
#include <set>

#include "lives/findings.h"
#include "platform/threads.h"

namespace nuvelta::explore {

class WakeWatch {
 public:
  explicit WakeWatch(Findings& findings) : m_findings(findings) {}

  void OnSet(platform::EventHandle event) { m_set.insert(event); }
  void OnReset(platform::EventHandle event) { m_set.erase(event); }
  // The worker waits without an end, and has waited.
  void OnWait(platform::EventHandle event) { m_awaited = event; }
  void OnWaited(platform::EventHandle event);

  // The end of a turn. While the task lock is held, the queue is under change.
  void OnStep(bool task_queued, bool lock_held);

 private:
  Findings& m_findings;
  std::set<platform::EventHandle> m_set;
  platform::EventHandle m_awaited{};  // none when the worker does not wait
};

}  // namespace nuvelta::explore
