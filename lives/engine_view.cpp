#include "lives/engine_view.h"

#include <pthread.h>
#include <spdlog/logger.h>

#include "common/ctask.h"
#include "common/logger.h"
#include "tasks/task_manager.h"

namespace nuvelta::explore {

namespace {

// An explicit instantiation may name a private member; the friend hands it out.
// So the engine needs no door for the sake of its checks.
template <class Tag, typename Tag::Member member>
struct Opened {
  friend typename Tag::Member Open(Tag /*tag*/) { return member; }
};

struct Queue {
  using Member = std::set<TaskElement> CTaskManager::*;
  friend Member Open(Queue tag);
};
template struct Opened<Queue, &CTaskManager::m_setTaskElement>;

struct LoggerMutex {
  using Member = std::mutex CLogger::*;
  friend Member Open(LoggerMutex tag);
};
template struct Opened<LoggerMutex, &CLogger::m_mutex>;

struct FileLogger {
  using Member = std::shared_ptr<spdlog::logger> CLogger::*;
  friend Member Open(FileLogger tag);
};
template struct Opened<FileLogger, &CLogger::m_logger>;

}  // namespace

std::vector<TaskState> QueuedTasks(const CTaskManager& manager) {
  std::vector<TaskState> tasks;
  for (const TaskElement& level : manager.*Open(Queue{})) {
    for (const CTask* task : level.lstTask) {
      tasks.push_back({.retry_times = task->iRetryTimes,
                       .exceptions = task->iExceptionTimes,
                       .dealing = task->bIsDealing});
    }
  }
  return tasks;
}

std::set<TaskElement>& Levels(CTaskManager& manager) { return manager.*Open(Queue{}); }

bool IsLoggerFree() {
  // The thread that asks may be the owner, which std::mutex::try_lock forbids and
  // POSIX allows.
  std::mutex& mutex = CLogger::GetInstance().*Open(LoggerMutex{});
  if (pthread_mutex_trylock(mutex.native_handle()) != 0) return false;
  pthread_mutex_unlock(mutex.native_handle());
  return true;
}

bool IsLogging() {
  const auto& logger = CLogger::GetInstance().*Open(FileLogger{});
  return logger != nullptr && logger->should_log(spdlog::level::info);
}

}  // namespace nuvelta::explore
