#include "lives/judging.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "lives/decision_rules.h"
#include "lives/life.h"
#include "lives/log_truth.h"
#include "lives/permission.h"
#include "lives/status_rules.h"
#include "lives/task_rules.h"
#include "lives/trace_rules.h"
#include "notebook/story/log_files.h"
#include "notebook/story/story.h"
#include "notebook/story/temporary_folder.h"
#include "support/log_lines.h"

namespace nuvelta::explore {

using virtual_notebook::Action;
using virtual_notebook::Duration;
using virtual_notebook::Event;
using virtual_notebook::Fault;
using virtual_notebook::FiredFault;
using virtual_notebook::ProcessEnd;
using virtual_notebook::Scenario;
using virtual_notebook::Scheduler;
using virtual_notebook::StoryReport;
using virtual_notebook::VirtualMachine;

namespace {

// The calls through which the service learns what the platform is.
constexpr std::array<std::string_view, 10> kPlatformCalls{
    "GetSystemFirmwareTable", "HeapAlloc",
    "MultiByteToWideChar",    "RegOpenKeyExW",
    "RegQueryValueExW",       "SetupDiEnumDeviceInfo",
    "SetupDiGetClassDevsW",   "SetupDiGetDeviceRegistryPropertyW",
    "WideCharToMultiByte",    "SetupDiOpenClassRegKeyExW"};

bool KnowsItsPlatform(const Scenario& life) {
  return std::ranges::none_of(life.faults, [](const Fault& fault) {
    return std::ranges::find(kPlatformCalls, fault.call) != kPlatformCalls.end();
  });
}

// A service that its stop does not reach, or a manager that is not told of it.
bool MayBeStuck(const StoryReport& report) {
  return std::ranges::any_of(report.fired_faults, [](const FiredFault& fault) {
    return fault.call == "SetServiceStatus" || fault.call == "RegisterServiceCtrlHandlerExW" ||
           fault.call == "SetEvent";
  });
}

// Only the set-up of the account watcher lets an exception out.
bool MayCrash(const StoryReport& report) {
  return std::ranges::any_of(report.fired_faults, [](const FiredFault& fault) {
    return fault.call.starts_with("AccountWatcher::") ||
           fault.call == "MobileBroadband::CreateAccountWatcher";
  });
}

bool HasToEndWithRadioOn(const Scenario& life, const Permission& permission) {
  return life.story == kHealthyEnd && life.faults.empty() && permission.AllowedAtEnd() &&
         HasExpectedAdapter(life.notebook);
}

// Reports of two threads can mix when they run at once.
bool HasOneReporter(const Scenario& life) {
  return std::ranges::none_of(life.events, [](const Event& event) {
    return event.action.kind == Action::Kind::kControl || event.action.kind == Action::Kind::kStop;
  });
}

std::chrono::system_clock::time_point SystemTime(virtual_notebook::Nanoseconds since_epoch) {
  return std::chrono::system_clock::time_point(
      std::chrono::duration_cast<std::chrono::system_clock::duration>(since_epoch));
}

void CheckEnd(const StoryReport& report, Findings& findings) {
  if (!report.deadlock.empty() && !MayBeStuck(report)) findings.Add("stuck: " + report.deadlock);
  for (const ProcessEnd& process : report.processes) {
    if (process.how == ProcessEnd::How::kCrashed && !MayCrash(report)) {
      findings.Add("the service crashed: " + process.crash);
    }
  }
  for (const std::string& note : report.notes) {
    if (note.starts_with("the notebook itself failed")) findings.Add(note);
  }
  findings.Expect(report.leaked_handles == 0, "handles are left open");
}

void CheckLogText(const std::string& log, bool free_running, Findings& findings) {
  TraceRules traces(findings);
  TaskRules tasks(findings, free_running ? TaskRules::Order::kLoose : TaskRules::Order::kExact);
  DecisionRules decisions(findings);
  for (const LogLine& line : support::ParseLog(log)) {
    traces.Take(line);
    tasks.Take(line);
    decisions.Take(line);
  }
  traces.Finish();
}

}  // namespace

std::vector<std::string> CheckLog(const std::string& log, bool free_running) {
  Findings findings;
  CheckLogText(log, free_running, findings);
  return findings.Texts();
}

LifeReport PlayLife(const Scenario& life, bool free_running) {
  const story::TemporaryFolder disk;
  const Permission permission(life);
  Findings findings;
  LifeReport result;
  CommandWatch::Allowed allowed = [&](Duration from, Duration to) {
    return permission.AllowedBetween(from, to);
  };
  if (!KnowsItsPlatform(life)) allowed = [](Duration, Duration) { return true; };
  std::vector<ProcessTruth> truths;
  const Watching watching{
      .findings = findings, .counts = result.counts, .truths = truths, .notebook = life.notebook};
  const StoryReport report =
      VirtualMachine(
          life,
          free_running ? story::ServiceProgram()
                       : WatchedProgram(watching, allowed, SystemTime(StartOf(life))),
          {.mode = free_running ? Scheduler::Mode::kFree : Scheduler::Mode::kDeterministic,
           .seed = life.seed,
           .disk = disk.Path()})
          .Play();
  CheckEnd(report, findings);
  if (!free_running || HasOneReporter(life)) CheckStatusReports(life, report, findings);
  const auto files = story::LogFiles(life, disk.Path());
  std::string log;
  for (const auto& file : files) log += story::ReadFile(file);
  CheckLogText(log, free_running, findings);
  if (!free_running) CompareWithLogs(life, report, truths, files, findings, result.counts);
  result.crashed = !report.Behaved();
  result.healthy_end = HasToEndWithRadioOn(life, permission);
  if (result.healthy_end) {
    findings.Expect(report.radio_after == 1, "the radio is not on at the end");
  }
  result.broken = findings.Texts();
  return result;
}

}  // namespace nuvelta::explore
