#include "notebook/program/summary.h"

#include <nlohmann/json.hpp>

#include <array>
#include <cstdarg>
#include <cstdio>

namespace nuvelta::story {

namespace {

using virtual_notebook::FiredFault;
using virtual_notebook::ModemCommand;
using virtual_notebook::ProcessEnd;
using virtual_notebook::RefusedControl;
using virtual_notebook::StatusReport;

std::string Format(const char* format, ...) __attribute__((format(printf, 1, 2)));
std::string Format(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  va_list again;
  va_copy(again, arguments);
  const int size = std::vsnprintf(nullptr, 0, format, arguments);
  std::string text(size < 0 ? 0 : static_cast<size_t>(size), '\0');
  std::vsnprintf(text.data(), text.size() + 1, format, again);
  va_end(again);
  va_end(arguments);
  return text;
}

std::string Hex(const std::vector<uint8_t>& bytes) {
  std::string text;
  for (const uint8_t byte : bytes) text += Format(text.empty() ? "%02X" : " %02X", byte);
  return text;
}

double Seconds(std::chrono::nanoseconds time) {
  return std::chrono::duration<double>(time).count();
}

std::string StateName(uint32_t state) {
  constexpr std::array<const char*, 8> kNames{
      "?",       "STOPPED",          "START_PENDING", "STOP_PENDING",
      "RUNNING", "CONTINUE_PENDING", "PAUSE_PENDING", "PAUSED"};
  return kNames[state < kNames.size() ? state : 0];
}

// The states in order, a bar between one process and the next.
std::string States(const Summary& summary) {
  std::string text;
  uint32_t process = 0;
  for (const StatusReport& status : summary.report.status_reports) {
    if (!text.empty()) text += status.process == process ? ", " : " | ";
    text += StateName(status.status.dwCurrentState);
    process = status.process;
  }
  return text.empty() ? "none reported" : text;
}

std::string HowEnded(const ProcessEnd& process) {
  switch (process.how) {
    case ProcessEnd::How::kReturned:
      return Format("returned %u", process.exit_code);
    case ProcessEnd::How::kKilled:
      return "killed";
    case ProcessEnd::How::kCrashed:
      return "CRASHED, " + process.crash;
  }
  return {};
}

std::string FaultText(const FiredFault& fault) {
  constexpr std::array<const char*, 4> kKinds{"error", "null", "HRESULT", "out of memory"};
  return Format("%s, call %u: %s 0x%X", fault.call.c_str(), fault.nth,
                kKinds[static_cast<size_t>(fault.kind)], fault.code);
}

class Table {
 public:
  void Row(const char* label, const std::string& value) {
    m_text += Format("  %-16s %s\n", label, value.c_str());
  }
  std::string Text() const { return m_text; }

 private:
  std::string m_text;
};

void AddCounts(Table& table, const Summary& summary) {
  if (!summary.counts) {
    table.Row("work", "not known: the service log is switched off");
    return;
  }
  const LogCounts& counts = *summary.counts;
  table.Row("triggers", std::to_string(counts.triggers));
  table.Row("runs", std::to_string(counts.runs));
  table.Row("retries", std::to_string(counts.retries));
  table.Row("give-ups", std::to_string(counts.give_ups));
}

// Runs of the same thing take one row.
template <class Item, class Same>
size_t RunLength(const std::vector<Item>& items, size_t first, Same same) {
  size_t end = first + 1;
  while (end < items.size() && same(items[first], items[end])) ++end;
  return end - first;
}

void AddCommands(Table& table, const std::vector<ModemCommand>& commands) {
  const char* label = "modem commands";
  if (commands.empty()) table.Row(label, "none");
  for (size_t i = 0; i < commands.size();) {
    const ModemCommand& command = commands[i];
    const size_t times = RunLength(commands, i, [](const auto& left, const auto& right) {
      return left.set == right.set && left.payload == right.payload &&
             left.radio_before == right.radio_before && left.radio_after == right.radio_after;
    });
    const std::string repeated = times > 1 ? Format("   %zu times", times) : "";
    table.Row(label, Format("%-5s %-11s   radio %d -> %d%s", command.set ? "set" : "query",
                            Hex(command.payload).c_str(), command.radio_before, command.radio_after,
                            repeated.c_str()));
    label = "";
    i += times;
  }
}

void AddRefusedControls(Table& table, const std::vector<RefusedControl>& refused) {
  for (size_t i = 0; i < refused.size();) {
    const size_t times = RunLength(refused, i, [](const auto& left, const auto& right) {
      return left.control == right.control && left.error == right.error;
    });
    const std::string repeated = times > 1 ? Format("   and %zu more", times - 1) : "";
    table.Row("control refused", Describe(refused[i]) + repeated);
    i += times;
  }
}

void AddFaults(Table& table, const std::vector<FiredFault>& faults) {
  for (size_t i = 0; i < faults.size();) {
    const size_t times = RunLength(faults, i, [](const auto& left, const auto& right) {
      return left.call == right.call && left.kind == right.kind && left.code == right.code;
    });
    const std::string repeated =
        times > 1 ? Format("   and %zu more, to call %u", times - 1, faults[i + times - 1].nth)
                  : "";
    table.Row("fault fired", FaultText(faults[i]) + repeated);
    i += times;
  }
}

size_t Restarts(const Summary& summary) { return summary.report.launches.size(); }

const char* Verdict(const Summary& summary) {
  if (!summary.report.Behaved()) return "MISBEHAVED";
  return summary.report.cut_short ? "INTERRUPTED" : "ok";
}

}  // namespace

std::string SummaryTable(const Summary& summary) {
  const virtual_notebook::StoryReport& report = summary.report;
  Table table;
  AddCounts(table, summary);
  table.Row("restarts", std::to_string(Restarts(summary)));
  AddCommands(table, report.commands);
  table.Row("radio", Format("%d -> %d", report.radio_before, report.radio_after));
  table.Row("why", TextOf(summary.why));
  table.Row("service states", States(summary));
  for (const ProcessEnd& process : report.processes) {
    table.Row("process", Format("%u %s", process.process, HowEnded(process).c_str()));
  }
  AddRefusedControls(table, report.refused_controls);
  AddFaults(table, report.fired_faults);
  for (const auto& fault : report.faults_not_fired) table.Row("fault NOT fired", fault.call);
  for (const std::string& note : report.notes) table.Row("note", note);
  if (!report.standard_output.empty()) table.Row("standard output", report.standard_output);
  if (!report.deadlock.empty()) table.Row("DEADLOCK", report.deadlock);
  if (report.cut_short) table.Row("INTERRUPTED", "the story was not played to its end");
  if (!summary.log_lost.empty()) table.Row("LOG LOST", summary.log_lost);
  table.Row("virtual time", Format("%.3f s", Seconds(report.virtual_time)));
  table.Row("real time", Format("%.3f s", Seconds(summary.real_time)));
  if (!summary.log_folder.empty()) table.Row("log files", summary.log_folder);
  return summary.title + "\n" + table.Text();
}

std::string SummaryLine(const Summary& summary) {
  const std::string work = summary.counts
                               ? Format("%u runs, %u retries, %u give-ups", summary.counts->runs,
                                        summary.counts->retries, summary.counts->give_ups)
                               : "log switched off";
  const char* const lost = summary.log_lost.empty() ? "" : "; LOG LOST";
  return Format("%s: %s%s; radio %d -> %d; %s; %s; %zu restarts; %.1f s in %.3f s",
                summary.file.c_str(), Verdict(summary), lost, summary.report.radio_before,
                summary.report.radio_after, InfoOf(summary.why.cause).id, work.c_str(),
                Restarts(summary), Seconds(summary.report.virtual_time),
                Seconds(summary.real_time));
}

std::string SummaryJson(const Summary& summary) {
  const virtual_notebook::StoryReport& report = summary.report;
  nlohmann::ordered_json json{{"file", summary.file},
                              {"title", summary.title},
                              {"behaved", report.Behaved()},
                              {"interrupted", report.cut_short}};
  if (summary.counts) {
    json["triggers"] = summary.counts->triggers;
    json["runs"] = summary.counts->runs;
    json["retries"] = summary.counts->retries;
    json["give_ups"] = summary.counts->give_ups;
  } else {
    for (const char* key : {"triggers", "runs", "retries", "give_ups"}) json[key] = nullptr;
  }
  json["restarts"] = Restarts(summary);
  json["commands"] = nlohmann::ordered_json::array();
  for (const ModemCommand& command : report.commands) {
    json["commands"].push_back({{"command", command.set ? "set" : "query"},
                                {"id", command.command_id},
                                {"bytes", Hex(command.payload)},
                                {"radio_before", command.radio_before},
                                {"radio_after", command.radio_after}});
  }
  json["radio_before"] = report.radio_before;
  json["radio_after"] = report.radio_after;
  const support::CauseInfo& info = support::InfoOf(summary.why.cause);
  json["verdict"] = support::IdOf(info.verdict);
  json["cause"] = info.id;
  json["states"] = nlohmann::ordered_json::array();
  for (const StatusReport& status : report.status_reports) {
    json["states"].push_back({{"process", status.process},
                              {"state", StateName(status.status.dwCurrentState)},
                              {"check_point", status.status.dwCheckPoint},
                              {"wait_hint_ms", status.status.dwWaitHint},
                              {"controls_accepted", status.status.dwControlsAccepted}});
  }
  json["processes"] = nlohmann::ordered_json::array();
  for (const ProcessEnd& process : report.processes) {
    json["processes"].push_back({{"process", process.process}, {"end", HowEnded(process)}});
  }
  json["controls_refused"] = nlohmann::ordered_json::array();
  for (const auto& refused : report.refused_controls) {
    json["controls_refused"].push_back({{"seconds", Seconds(refused.at)},
                                        {"control", refused.control},
                                        {"event_type", refused.event_type},
                                        {"error", refused.error}});
  }
  json["faults_fired"] = nlohmann::ordered_json::array();
  for (const FiredFault& fault : report.fired_faults) {
    json["faults_fired"].push_back(FaultText(fault));
  }
  json["faults_not_fired"] = nlohmann::ordered_json::array();
  for (const auto& fault : report.faults_not_fired) json["faults_not_fired"].push_back(fault.call);
  json["notes"] = report.notes;
  json["deadlock"] = report.deadlock;
  json["virtual_seconds"] = Seconds(report.virtual_time);
  json["real_seconds"] = Seconds(summary.real_time);
  json["log_folder"] = summary.log_folder;
  json["log_lost"] = summary.log_lost;
  return json.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

}  // namespace nuvelta::story
