#include <nlohmann/json.hpp>

#include <utility>

#include "support/explain.h"
#include "support/fleet.h"
#include "support/printable.h"
#include "support/run_text.h"

namespace nuvelta::support {

namespace {

using Json = nlohmann::ordered_json;

Json ToJson(const Place& place) {
  if (place.file.empty() && place.line == 0) return nullptr;
  return {{"file", Printable(place.file)}, {"line", place.line}, {"time", place.time}};
}

template <class Value>
Json ToJson(const std::optional<Value>& value) {
  return value ? Json(*value) : Json();
}

Json ToJson(const std::string& text) { return text.empty() ? Json() : Json(Printable(text)); }

void AddVerdict(Json& json, Cause cause, const Place& decided, const std::string& deciding) {
  const CauseInfo& info = InfoOf(cause);
  json["verdict"] = IdOf(info.verdict);
  json["cause"] = info.id;
  json["reason"] = info.reason;
  json["advice"] = info.advice;
  json["decided"] = ToJson(decided);
  json["deciding_line"] = ToJson(deciding);
}

const char* IdOf(TriggerKind kind) {
  switch (kind) {
    case TriggerKind::kStart:
      return "start";
    case TriggerKind::kAdapter:
      return "adapter";
    case TriggerKind::kAccount:
      return "account";
    case TriggerKind::kResume:
      return "resume";
    case TriggerKind::kQuickBoot:
      return "quick_boot";
    case TriggerKind::kUnknown:
      break;
  }
  return "unknown";
}

const char* IdOf(Verification verification) {
  switch (verification) {
    case Verification::kOn:
      return "on";
    case Verification::kOffByOldSwitch:
      return "off_by_SupportVerifyPlatform";
    case Verification::kOffByNewSwitch:
      return "off_by_IsDisableVerify";
    case Verification::kNotRead:
      break;
  }
  return "not_read";
}

const char* IdOf(NoteKind kind) {
  switch (kind) {
    case NoteKind::kServiceRuns:
      return "service_runs";
    case NoteKind::kStopAsked:
      return "stop_asked";
    case NoteKind::kServiceEnds:
      return "service_ends";
    case NoteKind::kSuspends:
      return "suspends";
    case NoteKind::kResumes:
      return "resumes";
    case NoteKind::kQuickBoot:
      return "quick_boot";
    case NoteKind::kLogon:
      return "logon";
    case NoteKind::kDeviceArrives:
      return "device_arrives";
    case NoteKind::kDeviceLeaves:
      return "device_leaves";
    case NoteKind::kRetry:
      return "retry";
    case NoteKind::kGiveUp:
      return "give_up";
    case NoteKind::kRestartAsked:
      return "restart_asked";
    case NoteKind::kRestartFailed:
      return "restart_failed";
    case NoteKind::kFailure:
      break;
  }
  return "failure";
}

Json ToJson(const Command& command) {
  if (command.begin.line == 0) return nullptr;
  return {{"at", ToJson(command.begin)},
          {"sent", command.sent},
          {"milliseconds", ToJson(command.milliseconds)},
          {"state", ToJson(command.state)},
          {"status", ToJson(command.status)},
          {"level", ToJson(command.level)},
          {"obeyed", command.obeyed}};
}

Json ToJson(const Evidence& seen) {
  return {{"adapter", ToJson(seen.adapter)},
          {"instance_id", ToJson(seen.instance_id)},
          {"mbim_id", ToJson(seen.mbim_id)},
          {"verification", IdOf(seen.verification)},
          {"SupportVerifyPlatform", ToJson(seen.old_switch)},
          {"IsDisableVerify", ToJson(seen.new_switch)},
          {"platform", ToJson(seen.platform)},
          {"listed", ToJson(seen.listed)},
          {"device_id", ToJson(seen.device_id)},
          {"approved", ToJson(seen.approved)},
          {"fcc_content", ToJson(seen.fcc_content)},
          {"fcc_mode", ToJson(seen.fcc_mode)},
          {"vendor_service", seen.vendor_service},
          {"query", ToJson(seen.query)},
          {"set", ToJson(seen.set)},
          {"exception", ToJson(seen.exception)}};
}

class JsonExplanation final : public Explanation {
 public:
  JsonExplanation(Print print, Print complain)
      : m_print(std::move(print)), m_complain(std::move(complain)) {}

  void OnNotebook(const NotebookLogs& logs) override { m_notebook = Printable(logs.name); }

  void OnTrigger(const Trigger& trigger) override {
    Json json = Row("trigger");
    json["at"] = ToJson(trigger.at);
    json["trigger"] = IdOf(trigger.kind);
    Write(json);
  }

  void OnNote(const Note& note) override {
    Json json = Row("event");
    json["at"] = ToJson(note.at);
    json["event"] = IdOf(note.kind);
    json["text"] = ToJson(note.text);
    Write(json);
  }

  void OnRun(const Run& run) override {
    Json json = Row("run");
    json["number"] = run.number;
    json["begin"] = ToJson(run.begin);
    json["end"] = ToJson(run.end);
    json["seconds"] = run.seconds;
    AddVerdict(json, run.cause, run.decided, run.deciding);
    json["evidence"] = ToJson(run.evidence);
    Write(json);
  }

  void OnProcessEnds(const Process& process) override {
    if (process.IsForeign()) return;
    Json json = Row("process");
    json["begin"] = ToJson(process.begin);
    json["last_line"] = ToJson(process.last_line);
    json["version"] = ToJson(process.version);
    json["built"] = ToJson(process.built);
    json["triggers"] = process.triggers;
    json["runs"] = process.runs;
    json["retries"] = process.retries;
    json["give_ups"] = process.give_ups;
    json["restarts"] = process.restarts;
    json["queries"] = process.queries;
    json["sets"] = process.sets;
    json["lines"] = process.lines;
    json["unknown_lines"] = process.unknown_lines;
    json["stray_lines"] = process.stray_lines;
    json["begin_is_missing"] = !process.has_begin && process.lines > 0;
    json["ends_in_mid_line"] = process.ends_in_mid_line;
    json["unfinished_run"] = ToJson(process.unfinished);
    AddVerdict(json, process.cause, process.decided, process.deciding);
    Write(json);
  }

  void OnVerdict(const NotebookVerdict& verdict) override {
    m_fleet.Add(verdict);
    Json json = Row("verdict");
    AddVerdict(json, verdict.last.cause, verdict.last.decided, verdict.last.deciding);
    json["since"] = ToJson(verdict.since);
    json["platform"] = ToJson(verdict.last.platform);
    json["radio_level"] = ToJson(verdict.last.radio);
    json["radio_at"] = ToJson(verdict.last.radio_at);
    json["processes"] = verdict.processes;
    json["first_seen"] = ToJson(verdict.first_seen);
    json["last_seen"] = ToJson(verdict.last_seen);
    Write(json);
  }

  void OnProblem(const std::string& what) override { m_complain(Printable(what) + "\n"); }

  void OnEnd() override {
    if (m_fleet.Notebooks() < 2) return;
    for (const auto& [key, row] : m_fleet.Rows()) {
      Write({{"type", "fleet"},
             {"platform", ToJson(key.first)},
             {"verdict", IdOf(InfoOf(key.second).verdict)},
             {"cause", InfoOf(key.second).id},
             {"count", row.count},
             {"first_seen", ToJson(row.first_seen)},
             {"last_seen", ToJson(row.last_seen)}});
    }
  }

 private:
  Json Row(const char* type) const { return {{"type", type}, {"notebook", m_notebook}}; }
  void Write(const Json& json) const {
    m_print(json.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n");
  }

  const Print m_print;
  const Print m_complain;
  std::string m_notebook;
  Fleet m_fleet;
};

}  // namespace

std::unique_ptr<Explanation> MakeJsonExplanation(Print print, Print complain) {
  return std::make_unique<JsonExplanation>(std::move(print), std::move(complain));
}

}  // namespace nuvelta::support
