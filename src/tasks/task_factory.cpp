#include "tasks/task_factory.h"

#include <new>

#include "auth/auth_task.h"
#include "common/func_trace.h"
#include "common/logger.h"

namespace nuvelta {

namespace {
constexpr int32_t kFirstRetryTimes = 30;
}  // namespace

CTask* CTaskFactory::createTask() {
  constexpr const char* kName = "CTaskFactory::createTask";
  // [fixed] no exit line.
  CFuncTrace::WriteEntry(kName);
  LogInfo(kName, "CTaskFactory createTask TASK_TYPE_AUTH");
  auto* pTask = new (std::nothrow) CTaskAuthModule();
  if (pTask == nullptr) return nullptr;
  pTask->bIsDealing = false;
  pTask->iRetryTimes = kFirstRetryTimes;
  pTask->iPriority = TASK_PRIORITY_HIGH;
  pTask->iExceptionTimes = 0;
  return pTask;
}

}  // namespace nuvelta
