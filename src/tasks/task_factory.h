// Makes the one task that every trigger adds.
#pragma once

namespace nuvelta {

class CTask;

class CTaskFactory {
 public:
  // A new authentication task with the defaults (30 runs, highest priority),
  // owned by the caller until CTaskManager::addTask takes it; null when the heap
  // is exhausted.
  static CTask* createTask();
};

}  // namespace nuvelta
