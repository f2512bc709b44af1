// The creation of the one task manager.
#include <atomic>
#include <mutex>
#include <new>

#include "common/critical_section.h"
#include "common/func_trace.h"
#include "modem/mbn_winrt_helper.h"
#include "tasks/task_manager.h"
#include "tasks/trigger.h"

namespace nuvelta {

namespace {

constexpr uint32_t kSpinCount = 4000;

std::atomic<CTaskManager*> g_pTaskManager{nullptr};
std::mutex g_creationLockMutex;
platform::CriticalSectionHandle g_creationLock{};
bool g_bWatcherSetUp = false;

platform::CriticalSectionHandle CreationLock() {
  const std::lock_guard lock(g_creationLockMutex);
  if (g_creationLock == platform::CriticalSectionHandle{}) {
    g_creationLock = platform::Os().threads->InitializeCriticalSectionAndSpinCount(kSpinCount);
  }
  return g_creationLock;
}

void OnAccountAdded() { AddAuthenticationTask(QueuedTasks::kKeep); }

}  // namespace

CTaskManager::CTaskManager()
    : m_csTask(platform::Os().threads->InitializeCriticalSectionAndSpinCount(kSpinCount)),
      m_hTaskEvent(platform::Os().threads->CreateEventW(false, false)) {}

CTaskManager* CTaskManager::GetTaskManagerInstance() {
  const CFuncTrace trace("CTaskManager::GetTaskManagerInstance");
  if (CTaskManager* pExisting = g_pTaskManager; pExisting != nullptr) return pExisting;
  const CriticalSectionLock lock(CreationLock());
  if (g_pTaskManager == nullptr) {
    const CFuncTrace construction("CTaskManager::CTaskManager");
    g_pTaskManager = new (std::nothrow) CTaskManager();
    if (g_pTaskManager == nullptr) return nullptr;
  }
  if (!g_bWatcherSetUp) {
    CMbnWinRtHelper::GetInstance().Init(OnAccountAdded);
    g_bWatcherSetUp = true;
  }
  return g_pTaskManager;
}

void CTaskManager::MakeAfreshForSimulation() {
  delete g_pTaskManager.exchange(nullptr);
  g_creationLock = {};
  g_bWatcherSetUp = false;
}

}  // namespace nuvelta
