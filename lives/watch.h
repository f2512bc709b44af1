// One life under watch: the service runs on ports that tell what it does, and is
// looked at whenever a thread gives up its turn. Deterministic mode only.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>

#include "lives/command_watch.h"
#include "lives/findings.h"
#include "lives/lock_watch.h"
#include "lives/task_watch.h"
#include "lives/wake_watch.h"
#include "notebook/machine/virtual_machine.h"
#include "platform/clock.h"

namespace nuvelta {
class CTaskManager;
}

namespace nuvelta::explore {

// What happened in a life, to tell how much was tried.
struct Counts {
  uint64_t steps = 0;
  uint64_t processes = 0;
  uint64_t added = 0;
  uint64_t cleaned = 0;
  uint64_t runs = 0;
  uint64_t sets = 0;

  Counts& operator+=(const Counts& other);
};

// A process under watch; every start of the service has one of its own.
class Watch {
 public:
  Watch(Findings& findings, CommandWatch::Allowed allowed, platform::Clock& clock,
        std::chrono::system_clock::time_point start);

  LockWatch locks;
  TaskWatch tasks;
  CommandWatch commands;
  WakeWatch wakes;

  void OnManager(const CTaskManager* manager) { m_manager = manager; }
  // The event of an add is signalled under the task lock.
  void OnSignal(uint32_t thread);
  void OnLeave(uint32_t thread, uintptr_t section);
  void OnStep();

  virtual_notebook::Duration Now();
  Counts Total() const;

 private:
  platform::Clock& m_clock;
  const std::chrono::system_clock::time_point m_start;
  const CTaskManager* m_manager = nullptr;
  bool m_signalled = false;  // since the task lock was taken
  Counts m_counts;
};

// The service's program, with every process of it under watch. The findings and
// the counts must outlive the program.
virtual_notebook::Program WatchedProgram(Findings& findings, Counts& counts,
                                         const CommandWatch::Allowed& allowed,
                                         std::chrono::system_clock::time_point start);

}  // namespace nuvelta::explore
