// The queue of the task manager. Set elements are immutable, so a level that is to
// change is taken out of the set, and put back when it has.
#include <algorithm>
#include <utility>

#include "common/critical_section.h"
#include "common/ctask.h"
#include "common/func_trace.h"
#include "common/logger.h"
#include "tasks/task_manager.h"

namespace nuvelta {

namespace {

int Size(const TaskElement& taskElement) { return static_cast<int>(taskElement.lstTask.size()); }

constexpr const char* kAddTask = "CTaskManager::addTask";

void LogFound(const char* name, const TaskElement& taskElement) {
  LogInfo(name, "find taskElement.iPriority = %d; list size = %d ", taskElement.iPriority,
          Size(taskElement));
}

}  // namespace

// True when the level holds a task of the same type, which then got the budget.
bool CTaskManager::MergeIntoDuplicate(const TaskElement& taskElement, CTask* pTask) {
  const auto found = std::ranges::find_if(taskElement.lstTask, [&](CTask* pQueued) {
    return pQueued->getTaskTypeId() == pTask->getTaskTypeId();
  });
  if (found == taskElement.lstTask.end()) return false;
  CTask* pQueued = *found;
  const int32_t iRetryTimes = pQueued->iRetryTimes;
  if (iRetryTimes != 0) {
    // [fixed] the type id under "retry times", the retry times behind it.
    LogInfo(kAddTask,
            "find the same task ID, and the retry times(%d) != 0 ,so do not add the new task(%d)",
            pTask->getTaskTypeId(), iRetryTimes);
    // The queued task may be running: the worker reads the count between runs.
    ++pQueued->iRetryTimes;
    ++pQueued->iRetryTimes;
    CTask::Destroy(pTask);
  } else {
    // [fixed] the same two values.
    LogInfo(kAddTask,
            "find the same task ID, and the retry times(%d)"
            " == 0 ,so do not add the new task(%d),but add 1 ",
            pTask->getTaskTypeId(), iRetryTimes);
    ++pQueued->iRetryTimes;
    // [fixed] the new task is left allocated and forgotten.
  }
  return true;
}

// What can fail comes first: no task is lost when memory is exhausted. The level
// stays where it is in memory.
void CTaskManager::AppendToLevel(std::set<TaskElement>::const_iterator level, CTask* pTask) {
  std::list<CTask*> lstAdded{pTask};
  auto node = m_setTaskElement.extract(level);
  node.value().lstTask.splice(node.value().lstTask.end(), lstAdded);
  m_setTaskElement.insert(std::move(node));
}

void CTaskManager::addTask(CTask* pTask) {
  const CFuncTrace trace(kAddTask);
  const CriticalSectionLock lock(m_csTask);
  for (auto stored = m_setTaskElement.begin(); stored != m_setTaskElement.end(); ++stored) {
    const TaskElement& taskElement = *stored;
    LogInfo(kAddTask,
            "taskElement.iPriority = %d"
            "(0 TASK_PRIORITY_HIGH ; 1 TASK_PRIORITY_MEDIUM ; 2 TASK_PRIORITY_LOW)"
            ";  list size = %d",
            taskElement.iPriority, Size(taskElement));
    if (taskElement.iPriority != pTask->iPriority) continue;
    LogInfo(kAddTask, "find equel priority task Element iPriority = %d; list old size = %d",
            taskElement.iPriority, Size(taskElement));
    if (!MergeIntoDuplicate(taskElement, pTask)) {
      LogInfo(kAddTask,
              "the same task type id(%d"
              " < 100 TASK_TYPE_ID_CHANGE_USB_MODE ; 200 TASK_TYPE_ID_CHECK_STATUS ; "
              "300 TASK_TYPE_ID_QUICK_BOOT ; 400 TASK_TYPE_ID_UNZIP_FIRMWARE ; "
              "500 TASK_TYPE_ID_UPGRADE ; 600 TASK_TYPE_ID_UPGRADE_FROM_EDL ; "
              "700 TASK_TYPE_ID_UPGRADE_FROM_NORMAL>) is not exist , add the task",
              pTask->getTaskTypeId());
      AppendToLevel(stored, pTask);
      LogInfo(kAddTask,
              "find equel priority task Element iPriority = %d"
              "; push back new task :%s ,after that list size = %d",
              taskElement.iPriority, pTask->getTaskName(), Size(taskElement));
    }
    platform::Os().threads->SetEvent(m_hTaskEvent);
    return;
  }
  LogInfo(kAddTask,
          "there are not exist iPriority = %d task : %s"
          " ,add new TaskElement to set, task type id = %d"
          "(100 TASK_TYPE_ID_CHANGE_USB_MODE ; 200 TASK_TYPE_ID_CHECK_STATUS ; "
          "300 TASK_TYPE_ID_QUICK_BOOT ; 400 TASK_TYPE_ID_UNZIP_FIRMWARE ; "
          "500 TASK_TYPE_ID_UPGRADE ; 600 TASK_TYPE_ID_UPGRADE_FROM_EDL ; "
          "700 TASK_TYPE_ID_UPGRADE_FROM_NORMAL)",
          pTask->iPriority, pTask->getTaskName(), pTask->getTaskTypeId());
  m_setTaskElement.insert(TaskElement{.iPriority = pTask->iPriority, .lstTask = {pTask}});
  platform::Os().threads->SetEvent(m_hTaskEvent);
}

CTask* CTaskManager::getTask() {
  constexpr const char* kName = "CTaskManager::getTask";
  CFuncTrace trace(kName);
  const CriticalSectionLock lock(m_csTask);
  for (const TaskElement& taskElement : m_setTaskElement) {
    LogFound(kName, taskElement);
    if (taskElement.lstTask.empty()) continue;
    CTask* pTask = taskElement.lstTask.front();
    LogInfo(kName, "find taskElement.type = %s; ", pTask->getTaskName());
    LogInfo(kName, "after  front list size = %d; ", Size(taskElement));
    // [fixed] no exit line when a task is returned.
    trace.Dismiss();
    return pTask;
  }
  return nullptr;
}

void CTaskManager::popTask(CTask* pTask) {
  constexpr const char* kName = "CTaskManager::popTask";
  const CFuncTrace trace(kName);
  const CriticalSectionLock lock(m_csTask);
  for (auto stored = m_setTaskElement.begin(); stored != m_setTaskElement.end(); ++stored) {
    const TaskElement& taskElement = *stored;
    LogFound(kName, taskElement);
    const auto found = std::ranges::find(taskElement.lstTask, pTask);
    if (found == taskElement.lstTask.end()) continue;
    LogInfo(kName, "find the same task,will delete the task %s(%s in list)", pTask->getTaskName(),
            (*found)->getTaskName());
    CTask::Destroy(pTask);
    auto node = m_setTaskElement.extract(stored);
    node.value().lstTask.erase(found);
    // A level that has become empty stays in the set; readers skip it.
    m_setTaskElement.insert(std::move(node));
    LogInfo(kName, "after  delete task list size = %d", Size(taskElement));
    return;
  }
}

void CTaskManager::printTaskList() {
  constexpr const char* kName = "CTaskManager::printTaskList";
  const CFuncTrace trace(kName);
  const CriticalSectionLock lock(m_csTask);
  LogInfo(kName, "\r\n================= print task list begin ========================\r\n");
  int iNumber = 1;
  for (const TaskElement& taskElement : m_setTaskElement) {
    for (CTask* pTask : taskElement.lstTask) {
      LogInfo(kName,
              "[%d]:iPriority %d"
              "(0 TASK_PRIORITY_HIGH ; 1 TASK_PRIORITY_MEDIUM ; 2 TASK_PRIORITY_LOW) %s"
              " , retry time = %d",
              iNumber++, taskElement.iPriority, pTask->getTaskName(), pTask->iRetryTimes.load());
    }
  }
  LogInfo(kName, "\r\n================= print task list end ========================\r\n");
}

bool CTaskManager::cleanNotDealTasks() {
  constexpr const char* kName = "CTaskManager::cleanNotDealTasks";
  const CFuncTrace trace(kName);
  const CriticalSectionLock lock(m_csTask);
  int iNumber = 1;
  for (const TaskElement& taskElement : m_setTaskElement) {
    for (CTask* pTask : taskElement.lstTask) {
      if (pTask->bIsDealing) {
        LogInfo(kName,
                "[%d]: do not clean dealing task iPriority %d"
                "(0 TASK_PRIORITY_HIGH ; 1 TASK_PRIORITY_MEDIUM ; 2 TASK_PRIORITY_LOW) %s"
                "  retry times = %d",
                iNumber++, taskElement.iPriority, pTask->getTaskName(), pTask->iRetryTimes.load());
      } else {
        LogInfo(kName,
                "[%d]: clean not dealing task iPriority %d"
                "(0 TASK_PRIORITY_HIGH ; 1 TASK_PRIORITY_MEDIUM ; 2 TASK_PRIORITY_LOW) %s"
                " retry times = %d",
                iNumber++, taskElement.iPriority, pTask->getTaskName(), pTask->iRetryTimes.load());
      }
      // [fixed] for dealing tasks too, whatever the line says.
      pTask->iRetryTimes = 0;
    }
  }
  return true;
}

}  // namespace nuvelta
