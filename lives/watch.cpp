#include "lives/watch.h"

#include <atomic>
#include <string_view>
#include <utility>

#include "common/logger.h"
#include "lives/engine_view.h"
#include "lives/watched_modem.h"
#include "lives/watched_system.h"
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
  compared_runs += other.compared_runs;
  compared_processes += other.compared_processes;
  silent_processes += other.silent_processes;
  lost_logs += other.lost_logs;
  logs_elsewhere += other.logs_elsewhere;
  unknown_firmware += other.unknown_firmware;
  return *this;
}

Watch::Watch(Findings& findings, CommandWatch::Allowed allowed, platform::Clock& clock,
             std::chrono::system_clock::time_point start,
             const virtual_notebook::Notebook& notebook)
    : locks(findings),
      tasks(findings),
      commands(findings, std::move(allowed)),
      wakes(findings),
      runs(tasks, notebook),
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

// The other events are that of the tasks, without which the worker goes on, and those of
// the commands.
void Watch::OnNoEvent(bool manual_reset) {
  if (runs.AtHand() != nullptr) {
    runs.OnRaised();
  } else if (manual_reset) {
    runs.OnNoStopEvent();
  }
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

// Hears whether a process has a log. What the log says is not listened to.
class LogEar final : public LogListenerForSimulation {
 public:
  LogEar() { CLogger::GetInstance().ListenForSimulation(this); }
  ~LogEar() override { CLogger::GetInstance().ListenForSimulation(nullptr); }
  LogEar(const LogEar&) = delete;
  LogEar& operator=(const LogEar&) = delete;

  // Its main thread says the first line.
  void OnMessage(std::string_view /*message*/) override {
    if (Scheduler::CurrentThread() == m_main && IsLogging()) m_has_log = true;
  }
  void OnLost(const std::string& /*why*/) override { m_lost_lines = true; }

  bool HasLog() const { return m_has_log; }
  bool HasLostLines() const { return m_lost_lines; }

 private:
  const uint32_t m_main = Scheduler::CurrentThread();
  bool m_has_log = false;
  std::atomic<bool> m_lost_lines = false;  // the log's writer tells of it
};

// The ports of one process: all but some are the notebook's own.
struct WatchedProcess {
  const uint32_t id = Scheduler::CurrentProcess();
  const platform::Platform& original = platform::Os();
  Watch watch;
  bool on = true;
  LogEar log;
  WatchedThreads threads{
      static_cast<virtual_notebook::VirtualThreads&>(*original.threads).Notebook(), watch, on};
  WatchedMobileBroadband mobile_broadband{*original.mobile_broadband, watch, on};
  WatchedSystem system{original, {.watch = watch, .on = on}};
  platform::Platform platform = original;

  WatchedProcess(const Watching& watching, CommandWatch::Allowed allowed,
                 std::chrono::system_clock::time_point start)
      : watch(watching.findings, std::move(allowed), *platform::Os().clock, start,
              watching.notebook) {
    platform.mobile_broadband = &mobile_broadband;
    platform.threads = &threads;
    system.PutInto(platform);
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

  ProcessTruth Truth() {
    ProcessTruth truth = watch.runs.Finish();
    truth.process = id;
    truth.has_log = log.HasLog();
    truth.lost_lines = log.HasLostLines();
    return truth;
  }
};

}  // namespace

Program WatchedProgram(const Watching& watching, const CommandWatch::Allowed& allowed,
                       std::chrono::system_clock::time_point start) {
  Program program = story::ServiceProgram();
  const auto process = std::make_shared<std::unique_ptr<WatchedProcess>>();
  const Program service = program;
  program.main = [=] {
    *process = std::make_unique<WatchedProcess>(watching, allowed, start);
    return service.main();
  };
  // From here on its threads only unwind.
  program.mute = [=] {
    if (*process != nullptr) (*process)->on = false;
    service.mute();
  };
  program.make_afresh = [=] {
    // All that the log's writer still has is written here.
    service.make_afresh();
    if (*process != nullptr) {
      watching.counts += (*process)->watch.Total();
      watching.truths.push_back((*process)->Truth());
    }
    process->reset();
  };
  return program;
}

}  // namespace nuvelta::explore
