#include "service/nservice.h"

#include "common/func_trace.h"
#include "common/logger.h"
#include "platform/platform.h"
#include "platform/threads.h"
#include "tasks/task_manager.h"
#include "tasks/trigger.h"

namespace nuvelta {

std::atomic<NService*> g_pNService{nullptr};

void NService::Run() {
  constexpr const char* kName = "NService::Run";
  LogInfo(kName, "NService::Run entry");
  CTaskManager* pTaskManager = CTaskManager::GetTaskManagerInstance();
  if (pTaskManager != nullptr) pTaskManager->init();
  AddAuthenticationTask(pTaskManager, QueuedTasks::kKeep);
  platform::Os().threads->WaitForSingleObject(m_hServiceStopEvent, platform::kInfinite);
  LogInfo(kName, "\nNService::Run leave\n");
}

void NService::stop() {
  const CFuncTrace trace("NService::stop");
  if (CTaskManager* pTaskManager = CTaskManager::GetTaskManagerInstance();
      pTaskManager != nullptr) {
    pTaskManager->exit();
  }
}

void NService::dealDeviceArrive() {
  const CFuncTrace trace("NService::dealDeviceArrive");
  AddAuthenticationTask(QueuedTasks::kKeep);
}

void NService::dealQuickBoot() {
  const CFuncTrace trace("NService::dealQuickBoot");
  AddAuthenticationTask(QueuedTasks::kClean);
}

// [fixed] no trace scope, unlike its twin.
void NService::dealSleepResume() { AddAuthenticationTask(QueuedTasks::kClean); }

}  // namespace nuvelta
