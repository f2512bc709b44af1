#include "common/ctask.h"

#include "platform/memory.h"
#include "platform/platform.h"

namespace nuvelta {

void CTask::Destroy(CTask* pTask) noexcept {
  if (pTask == nullptr) return;
  // Tasks hold nothing that needs destruction, so the base's destructor is enough.
  pTask->CTask::~CTask();
  platform::Os().memory->HeapFree(pTask);
}

void* CTask::operator new(size_t size, const std::nothrow_t& /*unused*/) noexcept {
  return platform::Os().memory->HeapAlloc(size);
}

void CTask::operator delete(void* block, const std::nothrow_t& /*unused*/) noexcept {
  platform::Os().memory->HeapFree(block);
}

void CTask::operator delete(void* block) noexcept { platform::Os().memory->HeapFree(block); }

}  // namespace nuvelta
