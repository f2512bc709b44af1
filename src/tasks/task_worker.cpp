// The worker thread of the task manager.
#include "common/ctask.h"
#include "common/func_trace.h"
#include "common/logger.h"
#include "common/text_util.h"
#include "platform/clock.h"
#include "platform/platform.h"
#include "platform/threads.h"
#include "tasks/self_restart.h"
#include "tasks/task_manager.h"

namespace nuvelta {

namespace {

constexpr const char* kWorker = "CTaskManager::dealTaskThread";
constexpr const char* kAuthTaskName = "CTaskAuthModule";
constexpr int32_t kMostExceptions = 3;
constexpr uint32_t kPauseBeforeRetry = 2000;  // milliseconds
constexpr uint32_t kPauseAfterRun = 500;      // milliseconds
constexpr uint32_t kPauseWithoutEvent = 500;  // milliseconds

bool IsRestartDue(CTask* pTask) {
  return EqualIgnoreCase(pTask->getTaskName(), kAuthTaskName) &&
         pTask->iExceptionTimes > kMostExceptions;
}

}  // namespace

void CTaskManager::init() {
  constexpr const char* kName = "CTaskManager::init";
  const CFuncTrace trace(kName);
  m_bRunning = true;
  m_hThread = platform::Os().threads->CreateThread(dealTaskThread, this, "task worker");
  if (m_hThread == platform::ThreadHandle{}) {
    // [fixed] the service goes on: tasks are queued and never run.
    const uint32_t error = platform::Os().threads->GetLastError();
    LogInfo(kName, "Create task deal thread failed, errcode(0x%x).\r\n", error);
  }
}

bool CTaskManager::exit() {
  const CFuncTrace trace("CTaskManager::exit");
  m_bRunning = false;
  platform::Os().threads->SetEvent(m_hTaskEvent);
  return true;
}

uint32_t CTaskManager::dealTaskThread(void* pParam) {
  if (pParam == nullptr) return 1;
  auto* pTaskManager = static_cast<CTaskManager*>(pParam);
  const CFuncTrace trace(kWorker);
  while (pTaskManager->m_bRunning) {
    CTask* pTask = pTaskManager->getTask();
    if (pTask == nullptr) {
      pTaskManager->WaitForTask();
    } else {
      pTaskManager->DealOneTask(pTask);
    }
  }
  LogInfo(kWorker, "dealTaskThread exit");
  return 0;
}

void CTaskManager::WaitForTask() {
  platform::Threads& threads = *platform::Os().threads;
  if (threads.WaitForSingleObject(m_hTaskEvent, platform::kInfinite) == platform::kWaitFailed) {
    // Without its event the worker looks for tasks at intervals instead.
    threads.Sleep(kPauseWithoutEvent);
  }
  threads.ResetEvent(m_hTaskEvent);
}

void CTaskManager::DealOneTask(CTask* pTask) {
  printTaskList();
  if (IsRestartDue(pTask)) {
    LogInfo(kWorker, "CommonUtil::RestartService();");
    // [fixed] when it fails, the same task is taken again at once.
    if (CommonUtil::RestartService() != 0) exit();
    return;
  }
  if (const int32_t iRetryTimes = pTask->iRetryTimes; iRetryTimes <= 0) {
    LogInfo(kWorker, "\r\n\r\n deal task : %s ,retry times(%d) <=0 ,give up the Task \r\n",
            pTask->getTaskName(), iRetryTimes);
    popTask(pTask);
    return;
  }
  RunTask(pTask);
}

void CTaskManager::RunTask(CTask* pTask) {
  bool bRetry = false;
  const int64_t begin = platform::Os().clock->clock();
  pTask->doJob(&bRetry);
  const int64_t end = platform::Os().clock->clock();
  LogInfo(kWorker, "\r\n\r\n Deal Task %s Cast Time %.4fs\r\n", pTask->getTaskName(),
          static_cast<double>(static_cast<int32_t>(end - begin)) / 1000.0);
  if (bRetry) {
    RetryTask(pTask);
    return;
  }
  platform::Os().threads->Sleep(kPauseAfterRun);
  popTask(pTask);
}

void CTaskManager::RetryTask(CTask* pTask) {
  constexpr const char* kName = "CTaskManager::retry";
  const CFuncTrace trace(kName);
  LogInfo(kName, "\r\n\r\n retry deal task : %s ,retry times(%d) \r\n", pTask->getTaskName(),
          pTask->iRetryTimes.load());
  --pTask->iRetryTimes;  // to -1 when a resume has cleared it meanwhile
  platform::Os().threads->Sleep(kPauseBeforeRetry);
}

}  // namespace nuvelta
