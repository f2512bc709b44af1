// What the task engine and the logger keep to themselves, for checks between two
// steps, when no thread of the service runs.
#pragma once

#include <set>
#include <vector>

#include "lives/task_watch.h"

namespace nuvelta {
class CTaskManager;
struct TaskElement;
}  // namespace nuvelta

namespace nuvelta::explore {

// The queued tasks of every level.
std::vector<TaskState> QueuedTasks(const CTaskManager& manager);
// Its levels themselves, for measurements that need a long queue at once.
std::set<TaskElement>& Levels(CTaskManager& manager);

bool IsLoggerFree();
// Whether what the service says now goes to a log. For the thread that says it.
bool IsLogging();

}  // namespace nuvelta::explore
