#include "lives/wake_watch.h"

namespace nuvelta::explore {

void WakeWatch::OnWaited(platform::EventHandle event) {
  m_awaited = {};
  m_set.erase(event);  // it resets itself
}

void WakeWatch::OnStep(bool task_queued, bool lock_held) {
  if (!task_queued || lock_held || m_awaited == platform::EventHandle{}) return;
  m_findings.Expect(m_set.contains(m_awaited), "a task is queued and the worker sleeps");
}

}  // namespace nuvelta::explore
