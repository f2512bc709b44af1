// One life under watch: the service runs on ports that tell what it does, and is
// looked at whenever a thread gives up its turn. Deterministic mode only.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <vector>

#include "lives/command_watch.h"
#include "lives/findings.h"
#include "lives/lock_watch.h"
#include "lives/run_watch.h"
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
  // Held against their logs: runs, and processes; and those that were not.
  uint64_t compared_runs = 0;
  uint64_t compared_processes = 0;
  uint64_t silent_processes = 0;  // with the log switched off, or ended before its first line
  // And lives that were not: of whose log lines were lost, whose log lies in another
  // folder, whose firmware the rules do not know.
  uint64_t lost_logs = 0;
  uint64_t logs_elsewhere = 0;
  uint64_t unknown_firmware = 0;

  Counts& operator+=(const Counts& other);
};

// A process under watch; every start of the service has one of its own.
class Watch {
 public:
  Watch(Findings& findings, CommandWatch::Allowed allowed, platform::Clock& clock,
        std::chrono::system_clock::time_point start, const virtual_notebook::Notebook& notebook);

  LockWatch locks;
  TaskWatch tasks;
  CommandWatch commands;
  WakeWatch wakes;
  RunWatch runs;

  void OnManager(const CTaskManager* manager) { m_manager = manager; }
  // The event of an add is signalled under the task lock.
  void OnSignal(uint32_t thread);
  void OnLeave(uint32_t thread, uintptr_t section);
  // No event could be had.
  void OnNoEvent(bool manual_reset);
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

// What a watch is told, and what it leaves behind. All must outlive the program.
struct Watching {
  Findings& findings;
  Counts& counts;
  std::vector<ProcessTruth>& truths;  // of the processes, in order
  const virtual_notebook::Notebook& notebook;
};

// The service's program, with every process of it under watch.
virtual_notebook::Program WatchedProgram(const Watching& watching,
                                         const CommandWatch::Allowed& allowed,
                                         std::chrono::system_clock::time_point start);

}  // namespace nuvelta::explore
