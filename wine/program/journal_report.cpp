#include "wine/program/journal_report.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <utility>

#include "wine/story/places.h"

namespace nuvelta::wine_notebook {

using platform::ServiceStatus;
using virtual_notebook::Fault;
using virtual_notebook::ProcessEnd;
using virtual_notebook::Scenario;
using virtual_notebook::StoryReport;

namespace {

// Adds the journal's entries to the report, one after the other.
class Reporter {
 public:
  Reporter(const Scenario& scenario, StoryReport& report)
      : m_scenario(scenario), m_report(report) {}

  void operator()(const wine::ProcessEnded& ended) {
    ProcessEnd end{.process = ended.process,
                   .how = ProcessEnd::How::kReturned,
                   .exit_code = ended.exit_code,
                   .crash = std::exchange(m_crash, {})};
    if (ended.killed) end.how = ProcessEnd::How::kKilled;
    if (!end.crash.empty()) end.how = ProcessEnd::How::kCrashed;
    m_report.processes.push_back(std::move(end));
  }
  void operator()(const wine::EventPlayed& event) {
    const auto& modem = m_scenario.events.at(event.index).action.modem;
    if (modem.radio) m_report.radio_after = *modem.radio;
  }
  void operator()(const wine::CommandMade& command) {
    m_report.commands.push_back(command.command);
    m_report.radio_after = command.command.radio_after;
  }
  void operator()(const wine::StatusReported& status) {
    m_report.status_reports.push_back({status.process, status.reported});
  }
  void operator()(const wine::FaultFired& fired) { m_report.fired_faults.push_back(fired.fault); }
  void operator()(const wine::Launched& launch) {
    m_report.launches.push_back(launch.command_line);
  }
  void operator()(const wine::ControlRefused& refused) {
    m_report.refused_controls.push_back({.at = m_at,
                                         .control = refused.control,
                                         .event_type = refused.event_type,
                                         .error = refused.error});
  }
  void operator()(const wine::Note& note) {
    if (note.text.starts_with(wine::kCrashNote)) {
      m_crash = note.text.substr(std::strlen(wine::kCrashNote));
    } else if (note.text.starts_with(wine::kStuckNote)) {
      m_report.deadlock = note.text.substr(std::strlen(wine::kStuckNote));
    } else {
      m_report.notes.push_back(note.text);
    }
  }
  void operator()(const wine::ProcessBegan&) {}
  void operator()(const wine::CallMade&) {}
  void operator()(const wine::Request&) {}

  void Add(const wine::Entry& entry) {
    m_at = std::max(m_at, entry.at);
    std::visit(*this, entry.what);
  }
  virtual_notebook::Duration At() const { return m_at; }

 private:
  const Scenario& m_scenario;
  StoryReport& m_report;
  virtual_notebook::Duration m_at{};
  std::string m_crash;  // of the process that ends next
};

bool HasFired(const Fault& fault, const StoryReport& report) {
  return std::ranges::any_of(report.fired_faults, [&](const auto& fired) {
    return fired.call == fault.call && fired.nth >= fault.nth &&
           (fault.count == 0 || fired.nth - fault.nth < fault.count);
  });
}

}  // namespace

StoryReport ReportOf(const Scenario& scenario, const std::vector<wine::Entry>& journal) {
  StoryReport report;
  report.radio_before = report.radio_after = scenario.notebook.modem.radio;
  Reporter reporter(scenario, report);
  for (const wine::Entry& entry : journal) reporter.Add(entry);
  report.virtual_time = reporter.At();
  for (const Fault& fault : scenario.faults) {
    if (!HasFired(fault, report)) report.faults_not_fired.push_back(fault);
  }
  return report;
}

std::vector<std::string> StatusDisagreements(const std::vector<wine::Entry>& journal) {
  std::vector<std::string> lines;
  for (const wine::Entry& entry : journal) {
    const auto* status = std::get_if<wine::StatusReported>(&entry.what);
    if (status == nullptr) continue;
    const auto differ = [&](const char* name, uint32_t ServiceStatus::*member) {
      const uint32_t reported = status->reported.*member;
      const uint32_t managers = status->managers.*member;
      if (reported == managers) return;
      lines.push_back(std::string(name) + ": reported " + std::to_string(reported) +
                      ", the manager has " + std::to_string(managers));
    };
    differ("state", &ServiceStatus::dwCurrentState);
    differ("controls accepted", &ServiceStatus::dwControlsAccepted);
    differ("exit code", &ServiceStatus::dwWin32ExitCode);
    differ("check point", &ServiceStatus::dwCheckPoint);
    differ("wait hint", &ServiceStatus::dwWaitHint);
  }
  return lines;
}

}  // namespace nuvelta::wine_notebook
