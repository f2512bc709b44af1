#include "lives/status_rules.h"

#include <algorithm>
#include <set>
#include <string>
#include <string_view>

#include "platform/service_control.h"

namespace nuvelta::explore {

using platform::ServiceStatus;
using virtual_notebook::Action;
using virtual_notebook::Event;
using virtual_notebook::Fault;
using virtual_notebook::ProcessEnd;
using virtual_notebook::Scenario;
using virtual_notebook::StatusReport;
using virtual_notebook::StoryReport;

namespace {

// What a story permits beside the plain sequence.
struct Permits {
  bool other_controls = false;  // delivered regardless of the manager
  bool lost_reports = false;
  bool early_end = false;  // stopped without a stop
  bool any_fault = false;
};

// Stop, shutdown, pause and continue are what the handler reports a state for.
bool ReportsRegardless(const Action& action) {
  return action.regardless && (action.number <= platform::kServiceControlContinue ||
                               action.number == platform::kServiceControlShutdown);
}

Permits PermitsOf(const Scenario& scenario) {
  const auto fails = [&](std::string_view call) {
    return std::ranges::any_of(scenario.faults,
                               [&](const Fault& fault) { return fault.call == call; });
  };
  return {.other_controls = std::ranges::any_of(
              scenario.events, [](const Event& event) { return ReportsRegardless(event.action); }),
          .lost_reports = fails("SetServiceStatus"),
          .early_end = fails("CreateEventW") || fails("WaitForSingleObject"),
          .any_fault = !scenario.faults.empty()};
}

class Sequence {
 public:
  Sequence(const Permits& permits, Findings& findings) : m_permits(permits), m_findings(findings) {}

  void Take(const ServiceStatus& status) {
    const uint32_t state = status.dwCurrentState;
    const bool settled = state == platform::kServiceRunning || state == platform::kServiceStopped;
    Expect(status.dwServiceType == platform::kServiceWin32OwnProcess ||
               (m_permits.other_controls && m_starts == 0),
           "another service type");
    Expect(status.dwWin32ExitCode == 0, "an exit code");
    const bool starting = state == platform::kServiceStartPending;
    Expect(status.dwControlsAccepted == (starting ? 0U : 0x81U), "other controls");
    Expect(status.dwWaitHint == (starting ? 1000U : 0U), "another wait hint");
    TakeCheckPoint(settled, status.dwCheckPoint);
    TakeState(state);
  }

  void End(const ProcessEnd& end) {
    if (end.how != ProcessEnd::How::kReturned || m_permits.any_fault) return;
    Expect(m_stopped == 1, "a process that returns has not reported stopped");
  }

 private:
  void Expect(bool holds, const char* rule) {
    if (!holds) m_findings.Add("status: " + std::string(rule) + " in" + m_states);
  }

  void TakeCheckPoint(bool settled, uint32_t check_point) {
    if (settled) {
      Expect(check_point == 0, "a check point in a settled state");
    } else if (m_permits.other_controls) {
      // The handler may report before the service's own thread has, or beside it.
      Expect(check_point > 0 && m_check_points.insert(check_point).second, "a check point twice");
    } else if (m_permits.lost_reports) {
      Expect(check_point > m_check_point, "a check point that does not rise");
      m_check_point = check_point;
    } else {
      Expect(check_point == ++m_check_point, "a check point out of turn");
    }
  }

  void TakeState(uint32_t state) {
    m_states += ' ' + std::to_string(state);
    const bool lost = m_permits.lost_reports;
    switch (state) {
      case platform::kServiceStartPending:
        Expect(m_starts++ == 0 && m_running + m_stopped == 0, "a late start");
        Expect(m_stopping == 0 || m_permits.other_controls, "a start behind a stop");
        break;
      case platform::kServiceRunning:
        Expect(m_running++ == 0 && m_stopped == 0 && (m_starts == 1 || lost), "a late running");
        Expect(m_stopping == 0 || m_permits.other_controls, "running after a stop");
        break;
      case platform::kServiceStopPending:
        ++m_stopping;
        Expect(m_running == 1 || lost || m_permits.other_controls, "a stop before running");
        break;
      case platform::kServiceStopped:
        Expect(m_stopped++ == 0, "stopped twice");
        Expect(m_stopping > 0 || lost || m_permits.early_end, "stopped without a stop");
        break;
      default:
        Expect(m_permits.other_controls && (state == platform::kServicePausePending ||
                                            state == platform::kServiceContinuePending),
               "an unknown state");
        break;
    }
  }

  const Permits m_permits;
  Findings& m_findings;
  std::string m_states;
  uint32_t m_check_point = 0;
  std::set<uint32_t> m_check_points;
  int m_starts = 0;
  int m_running = 0;
  int m_stopping = 0;
  int m_stopped = 0;
};

}  // namespace

void CheckStatusReports(const Scenario& scenario, const StoryReport& report, Findings& findings) {
  const Permits permits = PermitsOf(scenario);
  for (const ProcessEnd& process : report.processes) {
    Sequence sequence(permits, findings);
    for (const StatusReport& status : report.status_reports) {
      if (status.process == process.process) sequence.Take(status.status);
    }
    sequence.End(process);
  }
}

}  // namespace nuvelta::explore
