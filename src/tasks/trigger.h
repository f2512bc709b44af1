// What every trigger of the service does.
#pragma once

namespace nuvelta {

class CTaskManager;

enum class QueuedTasks {
  kKeep,   // what is queued goes on
  kClean,  // what is queued is given up in favour of the new task
};

// Gets the task manager, cleans its queue when told to, creates an
// authentication task and adds it. Does nothing when one cannot be had.
void AddAuthenticationTask(QueuedTasks queued);

// The same with a manager that the caller already has, which may be null.
void AddAuthenticationTask(CTaskManager* pTaskManager, QueuedTasks queued);

}  // namespace nuvelta
