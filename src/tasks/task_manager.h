// The owner of all queued tasks and the worker thread that runs them.
#pragma once

#include <atomic>
#include <cstdint>
#include <list>
#include <set>

#include "platform/types.h"

namespace nuvelta {

class CTask;

// One priority level of the queue.
struct TaskElement {
  int32_t iPriority = 0;
  std::list<CTask*> lstTask;  // in order of arrival

  bool operator<(const TaskElement& other) const { return iPriority < other.iPriority; }
};

class CTaskManager {
 public:
  // Defined in task_manager_instance.cpp.

  // The one manager of the process, created on first use together with the
  // mobile-broadband account watcher; null when memory is exhausted. A watcher
  // that cannot be set up throws what the platform threw.
  static CTaskManager* GetTaskManagerInstance();
  // Forgets the manager, as at the start of a process. No thread may use it.
  static void MakeAfreshForSimulation();

  // Defined in task_worker.cpp.

  // Starts the worker. Called once, before the first task is added. When no
  // thread can be had the service goes on without a worker.
  void init();
  // Asks the worker to stop and wakes it; does not wait for it. Returns true.
  bool exit();
  // The worker's procedure; pParam is the manager. 1 when it is null, else 0.
  static uint32_t dealTaskThread(void* pParam);

  // Defined in task_queue.cpp.

  // Takes ownership of a non-null task: queues it, or raises the retry budget of
  // a queued task of the same type (by 2, or by 1 from zero). Wakes the worker.
  void addTask(CTask* pTask);
  // The front task of the most urgent level, left in the queue; null when empty.
  CTask* getTask();
  // Removes the task from the queue and destroys it; worker only.
  void popTask(CTask* pTask);
  void printTaskList();
  // Sets every queued task's retry budget to 0, so that the worker gives it up.
  // Returns true.
  bool cleanNotDealTasks();

  CTaskManager(const CTaskManager&) = delete;
  CTaskManager& operator=(const CTaskManager&) = delete;

 private:
  CTaskManager();
  ~CTaskManager() = default;

  // In task_worker.cpp.
  void WaitForTask();
  void DealOneTask(CTask* pTask);
  void RunTask(CTask* pTask);
  void RetryTask(CTask* pTask);
  // In task_queue.cpp.
  void AppendToLevel(std::set<TaskElement>::const_iterator level, CTask* pTask);
  bool MergeIntoDuplicate(const TaskElement& taskElement, CTask* pTask);

  std::set<TaskElement> m_setTaskElement;
  platform::CriticalSectionHandle m_csTask;
  std::atomic<bool> m_bRunning = false;
  platform::ThreadHandle m_hThread{};
  platform::EventHandle m_hTaskEvent;
};

}  // namespace nuvelta
