// Holds a critical section for a scope.
#pragma once

#include "platform/platform.h"
#include "platform/threads.h"

namespace nuvelta {

class CriticalSectionLock {
 public:
  explicit CriticalSectionLock(platform::CriticalSectionHandle section) : m_section(section) {
    platform::Os().threads->EnterCriticalSection(m_section);
  }
  ~CriticalSectionLock() { platform::Os().threads->LeaveCriticalSection(m_section); }
  CriticalSectionLock(const CriticalSectionLock&) = delete;
  CriticalSectionLock& operator=(const CriticalSectionLock&) = delete;

 private:
  const platform::CriticalSectionHandle m_section;
};

}  // namespace nuvelta
