// The order of the locks. Permitted are the task lock alone and the creation lock
// alone, the latter until the task manager stands, and nobody pauses in either.
#pragma once

#include <cstdint>
#include <map>
#include <set>

#include "lives/findings.h"

namespace nuvelta::explore {

class LockWatch {
 public:
  explicit LockWatch(Findings& findings) : m_findings(findings) {}

  // A critical section has been made. The process makes the creation lock first,
  // and the task lock under it, as part of the manager.
  void OnMade(uintptr_t section);
  void OnEnter(uint32_t thread, uintptr_t section);
  void OnLeave(uint32_t thread, uintptr_t section);
  // The thread is about to wait for time or an event.
  void OnWait(uint32_t thread);
  // The end of a turn; whether the logger's mutex is free.
  void OnStep(bool logger_is_free);

  bool HoldsTaskLock(uint32_t thread) const;
  bool IsTaskLockHeld() const;  // by any thread

 private:
  bool Holds(uint32_t thread, uintptr_t section) const;

  Findings& m_findings;
  uintptr_t m_creation_lock = 0;
  uintptr_t m_task_lock = 0;
  bool m_manager_stands = false;
  std::map<uint32_t, std::multiset<uintptr_t>> m_held;  // by thread
};

}  // namespace nuvelta::explore
