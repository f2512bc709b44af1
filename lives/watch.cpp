#include "lives/watch.h"

#include <utility>

#include "lives/engine_view.h"
#include "lives/watched_modem.h"
#include "lives/watched_threads.h"
#include "notebook/story/story.h"
#include "platform/platform.h"

namespace nuvelta::explore {

using virtual_notebook::Program;
using virtual_notebook::Scheduler;

Counts& Counts::operator+=(const Counts& other) {
  steps += other.steps;
  processes += other.processes;
  added += other.added;
  cleaned += other.cleaned;
  runs += other.runs;
  sets += other.sets;
  return *this;
}

Watch::Watch(Findings& findings, CommandWatch::Allowed allowed, platform::Clock& clock,
             std::chrono::system_clock::time_point start)
    : locks(findings),
      tasks(findings),
      commands(findings, std::move(allowed)),
      wakes(findings),
      m_clock(clock),
      m_start(start) {}

void Watch::OnSignal(uint32_t thread) {
  if (!locks.HoldsTaskLock(thread)) return;
  m_signalled = true;
  ++m_counts.added;
  tasks.OnAdded();
}

// What leaves the lock without a signal and is not the worker has cleaned.
void Watch::OnLeave(uint32_t thread, uintptr_t section) {
  if (locks.HoldsTaskLock(thread) && !std::exchange(m_signalled, false) &&
      !tasks.IsWorker(thread)) {
    ++m_counts.cleaned;
    tasks.OnCleaned();
  }
  locks.OnLeave(thread, section);
}

void Watch::OnStep() {
  ++m_counts.steps;
  locks.OnStep(IsLoggerFree());
  if (m_manager == nullptr) return;
  const std::vector<TaskState> queue = QueuedTasks(*m_manager);
  tasks.OnStep(Scheduler::CurrentThread(), queue);
  wakes.OnStep(!queue.empty(), locks.IsTaskLockHeld());
  commands.OnRun(tasks.IsRunning(), Now());
}

virtual_notebook::Duration Watch::Now() { return m_clock.Now() - m_start; }

Counts Watch::Total() const {
  Counts total = m_counts;
  total.processes = 1;
  total.runs = tasks.Runs();
  total.sets = commands.Sets();
  return total;
}

namespace {

// The ports of one process: all but two are the notebook's own.
struct WatchedProcess {
  const platform::Platform& original = platform::Os();
  Watch watch;
  bool on = true;
  WatchedThreads threads{
      static_cast<virtual_notebook::VirtualThreads&>(*original.threads).Notebook(), watch, on};
  WatchedMobileBroadband mobile_broadband{*original.mobile_broadband, watch, on};
  platform::Platform platform = original;

  WatchedProcess(Findings& findings, CommandWatch::Allowed allowed,
                 std::chrono::system_clock::time_point start)
      : watch(findings, std::move(allowed), *platform::Os().clock, start) {
    platform.mobile_broadband = &mobile_broadband;
    platform.threads = &threads;
    platform::Install(&platform);
    Scheduler::OnStep([this] {
      if (on) watch.OnStep();
    });
  }
  ~WatchedProcess() {
    Scheduler::OnStep(nullptr);
    platform::Install(&original);
  }
  WatchedProcess(const WatchedProcess&) = delete;
  WatchedProcess& operator=(const WatchedProcess&) = delete;
};

}  // namespace

Program WatchedProgram(Findings& findings, Counts& counts, const CommandWatch::Allowed& allowed,
                       std::chrono::system_clock::time_point start) {
  Program program = story::ServiceProgram();
  const auto process = std::make_shared<std::unique_ptr<WatchedProcess>>();
  const Program service = program;
  program.main = [=, &findings] {
    *process = std::make_unique<WatchedProcess>(findings, allowed, start);
    return service.main();
  };
  // From here on its threads only unwind.
  program.mute = [=] {
    if (*process != nullptr) (*process)->on = false;
    service.mute();
  };
  program.make_afresh = [=, &counts] {
    service.make_afresh();
    if (*process != nullptr) counts += (*process)->watch.Total();
    process->reset();
  };
  return program;
}

}  // namespace nuvelta::explore
