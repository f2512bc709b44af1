#include "notebook/machine/virtual_machine.h"

#include <cstdlib>
#include <ctime>
#include <stdexcept>
#include <utility>

#include "notebook/machine/machine_parts.h"
#include "notebook/model/story_times.h"
#include "notebook/model/unicode.h"

namespace nuvelta::virtual_notebook {

Nanoseconds StartOf(const Scenario& scenario) {
  setenv("TZ", scenario.time_zone.c_str(), 1);
  tzset();
  std::tm local{};
  local.tm_isdst = -1;
  if (strptime(scenario.start_time.c_str(), "%Y-%m-%d %H:%M:%S", &local) == nullptr) {
    throw std::invalid_argument("not a time: " + scenario.start_time);
  }
  return std::chrono::seconds(mktime(&local));
}

VirtualMachine::VirtualMachine(const Scenario& scenario, Program program, const Options& options)
    : m_scenario(scenario), m_program(std::move(program)), m_visit(options.visit) {
  m_parts = std::make_unique<Parts>(
      m_scenario, StartOf(m_scenario), options, [this](const std::string& line) {
        m_parts->scheduler.Spawn("cmd.exe", 0, [this, line] { RunShell(line); });
      });
  for (const EventRecord& record : m_scenario.notebook.event_log) {
    m_parts->event_log.Write(record, m_parts->SecondsAt(record.at));
  }
  m_parts->scheduler.OnEscape(
      [this](const std::string& thread, const std::string& what) { OnCrash(thread, what); });
  if (options.go_on) {
    m_parts->scheduler.AskWhetherToGoOn([go_on = options.go_on, start = m_parts->start](
                                            Nanoseconds now) { return go_on(now - start); });
  }
  platform::Install(&m_parts->platform);
}

VirtualMachine::~VirtualMachine() { platform::Install(nullptr); }

std::filesystem::path VirtualMachine::HostPath(const std::string& path) const {
  return m_parts->files.HostPath(path);
}

StoryReport VirtualMachine::Play() {
  Parts& parts = *m_parts;
  parts.log_folder = m_program.log_folder();
  parts.files.PutOldLogs(parts.log_folder, m_scenario.notebook.old_logs, m_program.log_prefix,
                         m_program.log_suffix);
  parts.scheduler.Spawn("director", 0, [this] { Direct(); });
  parts.scheduler.Run();
  return Report();
}

StoryReport VirtualMachine::RunProcess(std::function<void()> body) {
  m_parts->current = 0x2F00;
  m_parts->service_control.BeginProcess(m_parts->current);
  m_parts->scheduler.Spawn("main", m_parts->current, [this, body = std::move(body)] {
    body();
    m_program.mute();
    m_parts->scheduler.KillProcess(m_parts->current);
    m_parts->scheduler.AwaitLastOfProcess(m_parts->current);
    m_program.make_afresh();
    m_parts->EndProcess();
  });
  m_parts->scheduler.Run();
  return Report();
}

void VirtualMachine::StartService() {
  Parts& parts = *m_parts;
  uint32_t process = 0;
  bool over = false;
  parts.scheduler.Change([&] {
    over = parts.over;
    if (parts.current != 0 || over) return;
    parts.current = process = parts.next_process;
    parts.next_process += 0x24;
    parts.begun.begun = false;
    parts.ended.ended = false;
  });
  if (process == 0) {
    if (!over) Note(kAlreadyRuns);
    return;
  }
  parts.service_control.BeginProcess(process);
  parts.scheduler.Spawn("main", process, [this, process] { ServiceProcess(process); });
}

// The life of one process, on its main thread.
void VirtualMachine::ServiceProcess(uint32_t process) {
  Parts& parts = *m_parts;
  parts.scheduler.Change([&] { parts.begun.begun = true; });
  ProcessEnd end{.process = process, .how = ProcessEnd::How::kKilled, .exit_code = 1, .crash = {}};
  try {
    parts.scheduler.Sleep(kProcessStart);
    parts.files.BeginProcess(parts.log_folder);
    end.exit_code = m_program.main();
    end.how = ProcessEnd::How::kReturned;
  } catch (const ThreadKilled&) {
    // Ended from outside, or by a crash on another thread.
  } catch (...) {
    OnCrash("main", Scheduler::DescribeCurrentException());
  }
  m_program.mute();
  parts.scheduler.KillProcess(process);
  parts.scheduler.AwaitLastOfProcess(process);
  m_program.make_afresh();
  parts.EndProcess();
  if (!parts.crash.empty()) {
    end.how = ProcessEnd::How::kCrashed;
    end.crash = std::exchange(parts.crash, {});
  }
  parts.processes.push_back(end);
  parts.scheduler.Change([&] {
    parts.current = 0;
    parts.ended.ended = true;
  });
}

void VirtualMachine::OnCrash(const std::string& thread, const std::string& what) {
  const uint32_t process = Scheduler::CurrentProcess();
  if (process == 0) {
    Note("the notebook itself failed: " + thread + ": " + what);
    return;
  }
  // First of all: the other threads get no turn behind a crash.
  m_program.mute();
  m_parts->scheduler.KillProcess(process);
  m_parts->scheduler.Change([&] {
    if (m_parts->crash.empty()) m_parts->crash = "thread \"" + thread + "\": " + what;
  });
}

void VirtualMachine::KillService(uint32_t process) {
  if (m_parts->current != process || process == 0) return;
  // A thread that is killed before its first step would leave no trace of the end.
  m_parts->scheduler.Wait(m_parts->begun, std::nullopt);
  m_program.mute();
  m_parts->scheduler.KillProcess(process);
  m_parts->scheduler.Wait(m_parts->ended, std::nullopt);
}

void VirtualMachine::Note(std::string text) {
  m_parts->scheduler.Change([&] { m_parts->notes.push_back(std::move(text)); });
}

StoryReport VirtualMachine::Report() {
  Parts& parts = *m_parts;
  return {.commands = parts.modem.Commands(),
          .radio_before = m_scenario.notebook.modem.radio,
          .radio_after = parts.modem.Description().radio,
          .status_reports = parts.service_control.Reports(),
          .refused_controls = parts.service_control.Refused(),
          .processes = parts.processes,
          .launches = parts.launches,
          .notes = parts.notes,
          .fired_faults = parts.faults.Fired(),
          .faults_not_fired = parts.faults.NotFired(),
          .standard_output = parts.environment.StandardOutput(),
          .deadlock = parts.stuck.empty() ? parts.scheduler.Deadlock() : parts.stuck,
          .leaked_handles = parts.leaked_handles,
          .virtual_time = parts.scheduler.Now() - parts.start,
          .steps = parts.scheduler.Steps(),
          .cut_short = parts.cut_short};
}

}  // namespace nuvelta::virtual_notebook
