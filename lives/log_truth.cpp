#include "lives/log_truth.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>

#include "lives/run_truth.h"
#include "support/log_files.h"
#include "support/log_story.h"

namespace nuvelta::explore {

using support::InfoOf;
using virtual_notebook::Fault;
using virtual_notebook::FiredFault;
using virtual_notebook::ModemCommand;
using virtual_notebook::Scenario;
using virtual_notebook::StoryReport;

namespace {

// A process as its log tells of it.
struct ToldProcess {
  std::vector<const char*> causes;
  support::Process end;
};

class Hearer final : public support::LogListener {
 public:
  void OnRun(const support::Run& run) override { m_causes.push_back(InfoOf(run.cause).id); }
  void OnProcessEnds(const support::Process& process) override {
    // Without its first line it is but the retention of a process that said nothing.
    if (process.has_begin) m_told.push_back({.causes = m_causes, .end = process});
    m_causes.clear();
  }
  const std::vector<ToldProcess>& Told() const { return m_told; }

 private:
  std::vector<const char*> m_causes;
  std::vector<ToldProcess> m_told;
};

bool HasFired(const StoryReport& report, std::string_view call) {
  return std::ranges::any_of(report.fired_faults,
                             [&](const FiredFault& fault) { return fault.call == call; });
}

// What the life is counted as when its logs cannot be held against anything.
uint64_t Counts::*WhyNotCompared(const Scenario& life, const StoryReport& report,
                                 const std::vector<ProcessTruth>& truths) {
  if (!KnowsFirmware(life.notebook)) return &Counts::unknown_firmware;
  if (std::ranges::any_of(truths, &ProcessTruth::lost_lines)) return &Counts::lost_logs;
  // It names the log's folder.
  return HasFired(report, "GetVariable") ? &Counts::logs_elsewhere : nullptr;
}

uint64_t LaunchesOf(const StoryReport& report, uint32_t process) {
  const std::string mark = "/pid " + std::to_string(process) + " ";
  return static_cast<uint64_t>(std::ranges::count_if(
      report.launches, [&](const std::string& line) { return support::Contains(line, mark); }));
}

// Why the radio is as it is when the process ends. Null: only the calls that a service
// begins with tell.
const char* CauseAtEnd(const StoryReport& report, const ProcessTruth& truth) {
  if (!truth.causes.empty()) return truth.causes.back();
  if (truth.no_stop_event) return "service_not_started";
  if (HasFired(report, "StartServiceCtrlDispatcherW") ||
      HasFired(report, "RegisterServiceCtrlHandlerExW")) {
    return nullptr;
  }
  if (truth.no_worker) return "no_worker";
  return truth.unfinished_run ? "run_unfinished" : "no_run";
}

class Comparison {
 public:
  Comparison(Findings& findings, std::string where)
      : m_findings(findings), m_where(std::move(where)) {}

  void Causes(const std::vector<const char*>& told, const std::vector<const char*>& known) {
    for (size_t i = 0; i < std::min(told.size(), known.size()); ++i) {
      Texts("run " + std::to_string(i + 1), told[i], known[i]);
    }
  }
  void Texts(const std::string& what, std::string_view told, std::string_view known) {
    if (told == known) return;
    m_findings.Add(m_where + what + " is " + std::string(told) + ", but the notebook knows " +
                   std::string(known));
  }
  void Numbers(const char* what, uint64_t told, uint64_t known) {
    Texts(std::string("the count of ") + what, std::to_string(told), std::to_string(known));
  }
  void Levels(std::optional<int32_t> told, std::optional<int32_t> known) {
    const auto text = [](std::optional<int32_t> level) {
      return level ? std::to_string(*level) : std::string("unknown");
    };
    Texts("the radio", text(told), text(known));
  }

 private:
  Findings& m_findings;
  const std::string m_where;
};

void Compare(const StoryReport& report, const ToldProcess& told, const ProcessTruth& truth,
             Findings& findings) {
  Comparison comparison(findings, "explain: process " + std::to_string(truth.process) + ": ");
  comparison.Causes(told.causes, truth.causes);
  comparison.Numbers("runs", told.causes.size(), truth.causes.size());
  comparison.Numbers("ended runs", told.end.runs, truth.causes.size());
  comparison.Numbers("retries", told.end.retries, truth.retries);
  comparison.Numbers("give-ups", told.end.give_ups, truth.give_ups);
  comparison.Numbers("restarts", told.end.restarts, LaunchesOf(report, truth.process));
  comparison.Numbers("queries", told.end.queries, truth.queries.came_back);
  comparison.Numbers("set commands", told.end.sets, truth.sets.came_back);
  comparison.Levels(told.end.radio, truth.radio);
  comparison.Texts("the place of the radio's level", told.end.radio_at.line == 0 ? "none" : "one",
                   truth.radio ? "one" : "none");
  comparison.Texts("a run without an end", told.end.unfinished.line == 0 ? "none" : "one",
                   truth.unfinished_run ? "one" : "none");
  if (const char* const cause = CauseAtEnd(report, truth)) {
    comparison.Texts("the cause at the end", InfoOf(told.end.cause).id, cause);
  }
}

// What the processes sent is what the modem got: but for operations that came back null,
// and with the commands that it answered by throwing.
void CompareWithModem(const StoryReport& report, const std::vector<ProcessTruth>& truths, bool set,
                      Findings& findings) {
  const std::string_view call =
      set ? "CommandSession::SendSetCommandAsync" : "CommandSession::SendQueryCommandAsync";
  const auto refused = static_cast<uint64_t>(
      std::ranges::count_if(report.fired_faults, [&](const FiredFault& fault) {
        return fault.call == call && fault.kind != Fault::Kind::kNull;
      }));
  uint64_t sent = 0;
  for (const ProcessTruth& truth : truths) {
    const Sendings& sendings = set ? truth.sets : truth.queries;
    sent += sendings.came_back - sendings.null + sendings.threw;
  }
  const auto got =
      static_cast<uint64_t>(std::ranges::count(report.commands, set, &ModemCommand::set));
  Comparison(findings, "watch: ").Numbers(set ? "set commands" : "queries", sent - refused, got);
}

}  // namespace

void CompareWithLogs(const Scenario& life, const StoryReport& report,
                     const std::vector<ProcessTruth>& truths,
                     const std::vector<std::filesystem::path>& files, Findings& findings,
                     Counts& counts) {
  for (const bool set : {false, true}) CompareWithModem(report, truths, set, findings);
  if (uint64_t Counts::*const why = WhyNotCompared(life, report, truths)) {
    ++(counts.*why);
    return;
  }
  std::vector<ProcessTruth> logged;
  std::ranges::copy_if(truths, std::back_inserter(logged), &ProcessTruth::has_log);
  counts.silent_processes += truths.size() - logged.size();
  Hearer hearer;
  support::ReadLogFiles(files, hearer);
  Comparison(findings, "explain: ").Numbers("processes", hearer.Told().size(), logged.size());
  for (size_t i = 0; i < std::min(hearer.Told().size(), logged.size()); ++i) {
    Compare(report, hearer.Told()[i], logged[i], findings);
    ++counts.compared_processes;
    counts.compared_runs += logged[i].causes.size();
  }
}

}  // namespace nuvelta::explore
