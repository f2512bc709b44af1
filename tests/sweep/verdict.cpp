#include "verdict.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>

#include "consequences.h"
#include "lives/judging.h"
#include "lives/status_rules.h"
#include "notebook/scenario/scenario_text.h"
#include "story_lines.h"
#include "support/log_lines.h"

namespace nuvelta::test {

namespace {

using virtual_notebook::ModemCommand;
using virtual_notebook::ProcessEnd;
using virtual_notebook::StatusReport;

class Verdict {
 public:
  Verdict(const Sound& sound, const Faulted& faulted)
      : m_sound(sound),
        m_faulted(faulted),
        m_report(faulted.told.report),
        m_how(faulted.fault.kind),
        m_before(faulted.Lasting() ? sound.stopped_lines : sound.lines),
        m_after(ReadLines(faulted.told)) {}

  std::string Judge() {
    CheckFired();
    CheckThereIsALog();
    m_wrong.insert(m_wrong.end(), m_after.faults.begin(), m_after.faults.end());
    for (const std::string& broken : explore::CheckLog(m_faulted.told.log, false)) {
      m_wrong.push_back(broken);
    }
    CheckStates();
    CheckCommands();
    const Outcome outcome = CheckFirstTrace();
    CheckProcesses(outcome);
    CheckCall();
    CheckOutcome(outcome);
    if (m_wrong.empty()) return {};
    std::string text;
    for (const std::string& wrong : m_wrong) text += "\n  - " + wrong;
    if (m_row == nullptr) return text;
    return text + "\n  where the table in " + std::string(kTableFile) + " has\n    " +
           RowText(*m_row);
  }

 private:
  void Expect(bool holds, const std::string& text) {
    if (!holds) m_wrong.push_back(text);
  }
  bool Is(std::string_view call) const { return m_faulted.fault.call == call; }

  // Commands that came back without an operation, and did not reach the modem.
  size_t Unsent(std::string_view call) const {
    return m_how == How::kNull && Is(call) ? m_faulted.fired.size() : 0;
  }

  void CheckFired() {
    const auto& fired = m_faulted.fired;
    Expect(fired.front().nth == m_faulted.fault.nth, "another call failed");
    Expect(m_faulted.Lasting() || fired.size() == 1, "the fault fired again");
  }

  // One scenario switches the log off, by a value that may be unreadable.
  void CheckThereIsALog() {
    const bool off = m_sound.name == "logging_off";
    const bool read = !Is("RegOpenKeyExW") && !Is("RegQueryValueExW") && !Is("HeapAlloc");
    Expect(m_before.lines.empty() == off, "the log without the fault");
    Expect(m_after.lines.empty() == off || (off && !read), "the log");
  }

  // The rules of lives; and what they leave open to a story with a fault.
  void CheckStates() {
    explore::Findings findings;
    explore::CheckStatusReports(m_faulted.scenario, m_report, findings);
    m_wrong.insert(m_wrong.end(), findings.Texts().begin(), findings.Texts().end());
    const bool unheard = Is("SetServiceStatus") || Is("WaitForSingleObject") ||
                         Is("RegisterServiceCtrlHandlerExW") || Is("StartServiceCtrlDispatcherW");
    for (const ProcessEnd& process : m_report.processes) {
      std::string states;
      for (const StatusReport& report : m_report.status_reports) {
        if (report.process == process.process)
          states += std::to_string(report.status.dwCurrentState);
      }
      Expect(states != "21" || Is("CreateEventW"), "stopped without having run");
      Expect(process.how != ProcessEnd::How::kReturned || unheard || states.ends_with('1'),
             "a process that returns has not reported stopped");
    }
  }

  // The bytes; a set command only after a query of its own; and none that the log
  // does not know of.
  void CheckCommands() {
    const ModemCommand* last = nullptr;
    size_t queries = 0;
    size_t sets = 0;
    for (const ModemCommand& command : m_report.commands) {
      const std::vector<uint8_t> set{1, 0, 0, 0};
      const std::vector<uint8_t> query{0};
      Expect(command.command_id == 1 && command.payload == (command.set ? set : query),
             "a command that nobody knows");
      ++(command.set ? sets : queries);
      if (command.set) {
        Expect(last != nullptr && !last->set, "a set command without a query");
        Expect(last == nullptr || last->radio_before < -2 || last->radio_before > 1 ||
                   last->radio_before == 0 || m_sound.name == "radio_not_ready",
               "a set command for a radio that is on, or that cannot");
      }
      last = &command;
    }
    if (m_after.lines.empty()) return;
    const Told& told = m_faulted.told;
    Expect(queries <= told.Count("+SendQueryCommandAsync\r\n") &&
               queries + Unsent("CommandSession::SendQueryCommandAsync") >=
                   told.Count("-SendQueryCommandAsync\r\n"),
           "queries that the log does not know");
    Expect(sets <= told.Count("+SendSetCommandAsync\r\n") &&
               sets + Unsent("CommandSession::SendSetCommandAsync") >=
                   told.Count("-SendSetCommandAsync\r\n"),
           "set commands that the log does not know");
    CheckForbidden(sets);
  }

  // A story that sends no set command without the fault sends none with it, unless the call
  // is one from which the service would have learned why not.
  void CheckForbidden(size_t sets) {
    static const std::map<std::string, std::set<std::string>> kMaySet{
        // A platform whose name cannot be read is unlisted, and passes.
        {"wrong_modem", {"GetSystemFirmwareTable", "HeapAlloc"}},
        // Nor can a device be refused that is not seen.
        {"pci_device_beside_usb_modem",
         {"GetSystemFirmwareTable", "HeapAlloc", "SetupDiEnumDeviceInfo",
          "SetupDiGetDeviceRegistryPropertyW", "WideCharToMultiByte"}},
        // A stop that is not noticed ends nothing.
        {"stop_while_busy", {"SetEvent"}},
    };
    const StoryReport& sound = m_sound.told.report;
    if (std::ranges::any_of(sound.commands, &ModemCommand::set)) return;
    const auto rule = kMaySet.find(m_sound.name);
    if (rule != kMaySet.end() && rule->second.contains(m_faulted.fault.call)) return;
    Expect(sets == 0 && m_report.radio_after == sound.radio_after,
           "the radio is set, which it is not without the fault; where that is right, kMaySet in "
           "tests/sweep/verdict.cpp says so");
  }

  // Compares the log with that of the story without the fault: the first line
  // that differs is where the call was made.
  Outcome CheckFirstTrace() {
    const auto& before = m_before.lines;
    const auto& after = m_after.lines;
    size_t at = 0;
    while (at < before.size() && at < after.size() && before[at].text == after[at].text &&
           before[at].thread == after[at].thread) {
      ++at;
    }
    std::vector<std::string> following;
    for (size_t i = at; i < after.size() && following.size() < 8; ++i) {
      if (after[i].thread == after[at].thread) {
        following.push_back(virtual_notebook::Shown(after[i].text, 4096));
      }
    }
    if (before.empty()) return OutcomeWithoutLog();
    const bool without_trace = at == before.size() && at == after.size();
    const std::string scope = at < after.size() ? after[at].scope : "";
    const auto fits = [&](const Consequence& row) {
      if (row.call != m_faulted.fault.call || row.how != m_how) return false;
      if (row.lines.empty() || (row.without_trace && without_trace)) return true;
      return row.scope == scope && row.lines.size() <= following.size() &&
             std::ranges::equal(row.lines, std::span(following).first(row.lines.size()),
                                [](auto& line, auto& text) { return support::Fits(text, line); });
    };
    const auto row = std::ranges::find_if(Consequences(), fits);
    if (row != Consequences().end()) return (m_row = &*row)->outcome;
    following.resize(std::min<size_t>(following.size(), 3));
    if (without_trace) following.emplace_back(kNoTrace);
    m_wrong.push_back("no row of the table in " + std::string(kTableFile) +
                      " says what follows here. If it is what has to follow, add this with no more "
                      "lines than are needed, and with its outcome:\n    " +
                      RowText({m_faulted.fault.call, m_how, scope, following}));
    return Outcome::kFinal;
  }

  // The one outcome that the call has wherever it is made.
  Outcome OutcomeWithoutLog() const {
    std::optional<Outcome> outcome;
    for (const Consequence& row : Consequences()) {
      if (row.call != m_faulted.fault.call || row.how != m_how || row.without_trace) continue;
      if (outcome && *outcome != row.outcome) return Outcome::kUnknown;
      outcome = row.outcome;
    }
    return outcome.value_or(Outcome::kUnknown);
  }

  void CheckProcesses(Outcome outcome) {
    size_t crashed = 0;
    size_t killed = 0;
    for (const ProcessEnd& process : m_report.processes) {
      crashed += process.how == ProcessEnd::How::kCrashed ? 1 : 0;
      killed += process.how == ProcessEnd::How::kKilled ? 1 : 0;
      if (process.how == ProcessEnd::How::kCrashed) {
        const std::string what =
            m_how == How::kBadAlloc ? "std::bad_alloc" : "an exception that is no std::exception";
        Expect(process.crash == "thread \"service main\": " + what, "crash: " + process.crash);
      }
      const uint32_t code = outcome == Outcome::kNoDispatcher ? 1063 : 0;
      const bool first = &process == m_report.processes.data();
      Expect(process.how != ProcessEnd::How::kReturned || process.exit_code == code ||
                 (!first && process.exit_code == 0),
             "exit code " + std::to_string(process.exit_code));
    }
    Expect((crashed > 0) == (outcome == Outcome::kCrash),
           crashed > 0 ? "the service crashed" : "the service did not crash");
    Expect(m_faulted.Lasting() || crashed <= 1, "crashed again");
    const bool may_hang = outcome == Outcome::kSignal || outcome == Outcome::kReport;
    Expect(m_report.deadlock.empty() ||
               (may_hang && m_report.deadlock.starts_with("the service did not end within 60 s")),
           "deadlock: " + m_report.deadlock);
    size_t ends = m_report.deadlock.empty() ? 0 : 1;
    for (const std::string& note : m_report.notes) {
      const bool unaccepted = note.starts_with("end: ");
      if (unaccepted) ++ends;
      Expect(!unaccepted || outcome == Outcome::kNoStatus || outcome == Outcome::kReport ||
                 outcome == Outcome::kNoEvent || outcome == Outcome::kWait ||
                 outcome == Outcome::kCrash || outcome == Outcome::kNoDispatcher,
             note);
    }
    const auto events = std::ranges::count_if(m_sound.scenario.events, [](const auto& event) {
      return event.action.kind == virtual_notebook::Action::Kind::kKill;
    });
    Expect(killed <= ends + m_report.launches.size() + static_cast<size_t>(events),
           "a process did not end by itself");
    Expect(killed > 0 || crashed > 0 || m_report.leaked_handles == 0, "handles are left open");
  }

  // What shows elsewhere than in the log, or in what the log does not hold.
  void CheckCall() {
    const Told& told = m_faulted.told;
    const size_t lives = told.Count("NService start ===");
    if (Is("NtQuerySystemInformation")) {
      Expect(m_report.standard_output.find("NtQuerySystemInformation Failed!\n") == 0,
             "nothing on standard output");
    } else {
      Expect(m_report.standard_output.empty(), "standard output: " + m_report.standard_output);
    }
    if (m_before.lines.empty() || lives != 1) return;
    const auto never = [&](std::string_view text) {
      Expect(told.Count(text) == 0, "there is a line \"" + std::string(text) + '"');
    };
    if (Is("RegisterPowerSettingNotification")) never("SERVICE_CONTROL_POWEREVENT");
    if (Is("RegisterSuspendResumeNotification")) never("PowerChanged: ");
    if (Is("RegisterDeviceNotificationW")) never(" :   Device ");
    if (Is("StartDetachedThread")) never("DeleteFileWhileExceedMaxSizeAndTime");
    if (Is("CreateThread")) never("dealTaskThread");
    if (Is("StartServiceCtrlDispatcherW")) never("ServiceMain");
  }

  void CheckOutcome(Outcome outcome) {
    const StoryReport& sound = m_sound.told.report;
    // With a fault that lasts, how the radio and the states end depends on its place.
    const bool by_place = outcome == Outcome::kSame || outcome == Outcome::kFinal ||
                          outcome == Outcome::kUnheard || outcome == Outcome::kNoStart;
    if (m_faulted.Lasting() && by_place) return;
    const bool same_radio = m_report.radio_after == sound.radio_after;
    const bool same_states = States(m_report) == States(sound);
    const std::string radio = "the radio ends at " + std::to_string(m_report.radio_after) +
                              ", without the fault at " + std::to_string(sound.radio_after);
    const std::string states =
        "the states are " + States(m_report) + ", without the fault " + States(sound);
    switch (outcome) {
      case Outcome::kSame:
        // A resume may have left the task no budget for the run that failed.
        Expect(same_radio || GiveUps(m_faulted.told) > GiveUps(m_sound.told), radio);
        Expect(same_states, states);
        break;
      case Outcome::kFinal:
      case Outcome::kUnheard:
        // Without the runs there may be no need to restart.
        Expect(same_states || m_report.launches.size() < sound.launches.size(), states);
        break;
      case Outcome::kCrash:
        Expect(States(m_report).starts_with("2 4"), states);
        break;
      case Outcome::kNoStatus:
      case Outcome::kNoDispatcher:
        Expect(m_report.processes.size() > 1 || m_report.status_reports.empty(), states);
        break;
      case Outcome::kNoEvent:
        Expect(States(m_report).find("2 1") != std::string::npos, states);
        break;
      case Outcome::kNoWorker:
        Expect(m_report.processes.size() > 1 || m_report.commands.empty(), "a task was run");
        break;
      case Outcome::kNoStart:
        Expect(std::ranges::count_if(m_report.launches,
                                     [](const std::string& line) {
                                       return line.ends_with("net start \"\"");
                                     }) == (sound.launches.empty() ? 0 : 1),
               "the launches");
        break;
      case Outcome::kWait:
      case Outcome::kSignal:
      case Outcome::kReport:
      case Outcome::kUnknown:
        break;
    }
  }

  static size_t GiveUps(const Told& told) { return told.Count(" <=0 ,give up the Task "); }

  const Sound& m_sound;
  const Faulted& m_faulted;
  const StoryReport& m_report;
  const How m_how;
  const StoryLines& m_before;
  const StoryLines m_after;
  std::vector<std::string> m_wrong;
  const Consequence* m_row = nullptr;  // of the table, that applies
};

}  // namespace

std::string Judge(const Sound& sound, const Faulted& faulted) {
  return Verdict(sound, faulted).Judge();
}

}  // namespace nuvelta::test
