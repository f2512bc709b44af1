#include "lives/lock_watch.h"

#include <algorithm>

namespace nuvelta::explore {

bool LockWatch::Holds(uint32_t thread, uintptr_t section) const {
  const auto held = m_held.find(thread);
  return held != m_held.end() && held->second.contains(section);
}

bool LockWatch::HoldsTaskLock(uint32_t thread) const {
  return m_task_lock != 0 && Holds(thread, m_task_lock);
}

bool LockWatch::IsTaskLockHeld() const {
  return std::ranges::any_of(m_held,
                             [&](const auto& held) { return held.second.contains(m_task_lock); });
}

void LockWatch::OnMade(uintptr_t section) {
  if (m_creation_lock == 0) {
    m_creation_lock = section;
  } else {
    m_findings.Expect(m_task_lock == 0, "a third critical section");
    m_task_lock = section;
  }
}

void LockWatch::OnEnter(uint32_t thread, uintptr_t section) {
  const auto held = m_held.find(thread);
  const bool holds_any = held != m_held.end() && !held->second.empty();
  m_findings.Expect(section == m_creation_lock || section == m_task_lock, "an unknown lock");
  m_findings.Expect(!holds_any, "a lock is taken while another is held");
  if (section == m_creation_lock) {
    m_findings.Expect(!m_manager_stands, "the creation lock is taken though the manager stands");
  }
  m_held[thread].insert(section);
}

void LockWatch::OnLeave(uint32_t thread, uintptr_t section) {
  auto& held = m_held[thread];
  const auto found = held.find(section);
  if (found == held.end()) {
    m_findings.Add("a lock is left that the thread does not hold");
    return;
  }
  held.erase(found);
  // Who asks for the lock while the manager is being made may have to.
  if (section == m_creation_lock && m_task_lock != 0) m_manager_stands = true;
}

void LockWatch::OnWait(uint32_t thread) {
  const auto held = m_held.find(thread);
  m_findings.Expect(held == m_held.end() || held->second.empty(), "a wait under a lock");
}

void LockWatch::OnStep(bool logger_is_free) {
  m_findings.Expect(logger_is_free, "a turn ends while the logger's mutex is held");
}

}  // namespace nuvelta::explore
