#include "tasks/trigger.h"

#include "tasks/task_factory.h"
#include "tasks/task_manager.h"

namespace nuvelta {

void AddAuthenticationTask(QueuedTasks queued) {
  AddAuthenticationTask(CTaskManager::GetTaskManagerInstance(), queued);
}

void AddAuthenticationTask(CTaskManager* pTaskManager, QueuedTasks queued) {
  if (pTaskManager == nullptr) return;
  if (queued == QueuedTasks::kClean) pTaskManager->cleanNotDealTasks();
  CTask* pTask = CTaskFactory::createTask();
  if (pTask == nullptr) return;
  pTaskManager->addTask(pTask);
}

}  // namespace nuvelta
