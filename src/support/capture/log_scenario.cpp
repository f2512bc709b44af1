#include "support/capture/log_scenario.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <set>

#include "common/text_util.h"
#include "platform/fcc_marker.h"
#include "support/capture/log_notebook.h"
#include "support/doctor_words.h"
#include "support/own_file.h"
#include "support/printable.h"

namespace nuvelta::support {

namespace {

using Json = nlohmann::ordered_json;
using std::chrono::floor;
using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr std::string_view kScenarioMark = "{\n \"title\": \"Made from a log, ";
constexpr int64_t kTicksInASecond = 10'000'000;
constexpr int64_t kSecondsTo1970 = 11'644'473'600;
constexpr int64_t kLowWord = 0xFFFFFFFF;
constexpr const char* kSwitchKey = "SOFTWARE\\Nuvelta Wireless Inc\\MAService";
constexpr const char* kOldName = "SupportVerifyPlatform";
constexpr const char* kNewName = "IsDisableVerify";
constexpr uint32_t kDeviceFailure = 0x8007001F;  // ERROR_GEN_FAILURE as an HRESULT

// Makes a scenario of what a log tells.
class Maker {
 public:
  explicit Maker(const LogNotebook& log) : m_log(log), m_start(floor<seconds>(*log.first)) {}

  Json Make();
  const std::vector<std::string>& Assumed() const { return m_assumed; }

 private:
  void Assume(const std::string& what) {
    if (std::ranges::find(m_assumed, what) == m_assumed.end()) m_assumed.push_back(what);
  }
  double At(LogMoment moment) const {
    return static_cast<double>(std::max<int64_t>((moment - m_start).count(), 0)) / 1000;
  }
  std::string StartText() const;

  void FindZone();
  Json Firmware();
  Json Fcc();
  Json Modem();
  Json Answers(bool set);
  Json Answer(const Run& run, const Command& command, bool set);
  void AddDevices(Json& notebook, Json& modem);
  Json Registry();
  Json Sessions();
  Json EventLog();
  Json Events();
  void AddChange(Json& events, const LoggedRun& run);
  void AddSwitch(Json& events, double at, const char* name, std::optional<int64_t>& was,
                 std::optional<int64_t> now);
  void AddEvent(Json& events, const LoggedEvent& event);
  Json Faults();

  bool IsModemInterface(const std::string& name) const;
  std::string InstanceId() const;

  const LogNotebook& m_log;
  const std::chrono::sys_seconds m_start;
  int32_t m_east = 0;
  bool m_present = true;
  bool m_mbim = true;
  bool m_vendor = true;
  std::optional<int64_t> m_old_switch, m_new_switch;
  std::vector<std::string> m_assumed;
};

bool KnowsAdapter(const Run& run) { return !run.evidence.adapter.empty(); }
bool LacksAdapter(const Run& run) { return run.cause == Cause::kNoAdapter; }
bool KnowsMbim(const Run& run) {
  return run.cause == Cause::kModemNotReachable ||
         run.evidence.verification != Verification::kNotRead;
}
bool KnowsServices(const Run& run) {
  return run.evidence.vendor_service || run.cause == Cause::kVendorServiceMissing;
}

std::string Maker::StartText() const {
  using namespace std::chrono;
  const auto day = floor<days>(m_start);
  const year_month_day date(day);
  const hh_mm_ss time(m_start - day);
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%04d-%02u-%02u %02d:%02d:%02d",
                static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                static_cast<unsigned>(date.day()), static_cast<int>(time.hours().count()),
                static_cast<int>(time.minutes().count()), static_cast<int>(time.seconds().count()));
  return text.data();
}

// The boot is logged in UTC and in local time.
void Maker::FindZone() {
  if (!m_log.boot_ticks || !m_log.boot_local) return Assume("the log's times are in UTC");
  const int64_t utc = static_cast<int64_t>(*m_log.boot_ticks) / kTicksInASecond - kSecondsTo1970;
  m_east = static_cast<int32_t>(floor<seconds>(*m_log.boot_local).time_since_epoch().count() - utc);
}

std::string ZoneText(int32_t east) {
  if (east == 0) return "UTC";
  std::array<char, 24> text{};
  std::snprintf(text.data(), text.size(), "LCL%s%d:%02d", east > 0 ? "-" : "",
                std::abs(east) / 3600, std::abs(east) / 60 % 60);
  return text.data();
}

Json Maker::Fcc() {
  const auto told = std::ranges::find_if(
      m_log.runs, [](const LoggedRun& one) { return one.run.evidence.fcc_mode.has_value(); });
  if (told == m_log.runs.end()) {
    Assume("the firmware is in FCC mode: no run came to it");
    return "present";
  }
  if (told->run.evidence.fcc_mode == true && m_log.fcc) {
    return {{"hex", Hex({reinterpret_cast<const uint8_t*>(m_log.fcc->data()), m_log.fcc->size()})}};
  }
  if (!m_log.fcc || m_log.fcc->empty()) return "absent";
  return {{"hex", Hex({reinterpret_cast<const uint8_t*>(m_log.fcc->data()), m_log.fcc->size()})}};
}

Json Maker::Firmware() {
  Json json = Json::object();
  if (m_log.firmware.empty()) {
    Assume("the firmware is a supported platform's: no run came to it");
  } else {
    for (const auto& [key, text] : m_log.firmware) json[key] = text;
    Assume("the firmware's table holds no more than the texts that are logged");
  }
  json["fcc"] = Fcc();
  return json;
}

std::string Maker::InstanceId() const {
  const auto found = std::ranges::find_if(
      m_log.runs, [](const LoggedRun& one) { return !one.run.evidence.instance_id.empty(); });
  return found == m_log.runs.end() ? std::string() : found->run.evidence.instance_id;
}

bool Maker::IsModemInterface(const std::string& name) const {
  std::string id = InstanceId();
  if (id.empty()) id = "USB\\VID_3A5E&PID_4A10&MI_00\\6&2A1B3C4D&0&0000";
  std::ranges::replace(id, '\\', '#');
  const std::string begin = "\\\\?\\" + id + "#";
  return name.size() >= begin.size() && EqualIgnoreCase(name.substr(0, begin.size()), begin);
}

// How one command was answered; null when it was not sent.
Json Maker::Answer(const Run& run, const Command& command, bool set) {
  if (command.begin.line == 0) return nullptr;
  Json answer = Json::object();
  if (command.state == "Started") return {{"answer", "never"}};
  if (command.state == "Canceled") answer["answer"] = "canceled";
  if (command.state == "Error") answer["answer"] = "error";
  if (command.status) answer["status"] = HexCode(*command.status);
  if (command.level) {
    const auto level = static_cast<uint32_t>(*command.level);
    const std::array<uint8_t, 4> bytes{
        static_cast<uint8_t>(level), static_cast<uint8_t>(level >> 8U),
        static_cast<uint8_t>(level >> 16U), static_cast<uint8_t>(level >> 24U)};
    answer["data"] = Hex(bytes);
  }
  if (!set && run.cause == Cause::kQueryTooShort) answer["data"] = "04 00";
  if (run.cause == Cause::kPlatformException && answer.empty() && !command.obeyed) {
    Assume("an exception of a command has the code 0x8007001F");
    answer["hresult"] = HexCode(kDeviceFailure);
  }
  if (answer.empty()) answer["answer"] = "healthy";
  if (command.milliseconds) answer["late_ms"] = std::max<int64_t>(*command.milliseconds, 0);
  return answer;
}

Json Maker::Answers(bool set) {
  Json answers = Json::array();
  const auto add = [&](const Json& answer) {
    if (answer.is_null()) return;
    const bool again = !answers.empty() && [&] {
      Json last = answers.back();
      last.erase("times");
      return last == answer;
    }();
    if (again) {
      answers.back()["times"] = answers.back().value("times", 1) + 1;
    } else {
      answers.push_back(answer);
    }
  };
  const auto add_unanswered = [&](size_t runs_before) {
    const auto count = std::ranges::count(m_log.unanswered, runs_before);
    for (auto left = set ? 0 : count; left > 0; --left) add({{"answer", "never"}});
  };
  for (size_t i = 0; i < m_log.runs.size(); ++i) {
    const Run& run = m_log.runs[i].run;
    add_unanswered(i);
    add(Answer(run, set ? run.evidence.set : run.evidence.query, set));
  }
  add_unanswered(m_log.runs.size());
  return answers;
}

void Maker::AddDevices(Json& notebook, Json& modem) {
  if (m_log.devices.empty()) {
    return Assume("the devices are ordinary ones and the modem: no run listed them");
  }
  const std::string front = InstanceId().substr(0, 21);
  uint32_t modem_at = m_log.devices.rbegin()->first;
  for (const auto& [number, id] : m_log.devices) {
    if (!front.empty() && EqualIgnoreCase(id.substr(0, front.size()), front)) modem_at = number;
  }
  notebook["devices"] = Json::array();
  for (uint32_t number = 0; number <= m_log.devices.rbegin()->first; ++number) {
    const auto found = m_log.devices.find(number);
    if (number == modem_at) {
      modem["hardware_id"] = found->second;
    } else {
      notebook["devices"].push_back(found == m_log.devices.end() ? Json() : Json(found->second));
    }
  }
  if (modem_at != m_log.devices.rbegin()->first) modem["device_place"] = modem_at;
}

// "NAME, adapter desc = D, friend name=F"
void SplitAdapter(const std::string& text, Json& modem) {
  const size_t description = text.find(", adapter desc = ");
  const size_t friendly = text.rfind(", friend name=");
  if (description == std::string::npos || friendly == std::string::npos) return;
  modem["adapter_name"] = Printable(text.substr(0, description));
  modem["description"] = Printable(text.substr(description + 17, friendly - description - 17));
  modem["friendly_name"] = Printable(text.substr(friendly + 14));
}

Json Maker::Modem() {
  Json modem = Json::object();
  const auto first_with = [&](auto predicate) {
    const auto found =
        std::ranges::find_if(m_log.runs, [&](const LoggedRun& one) { return predicate(one.run); });
    return found == m_log.runs.end() ? nullptr : &found->run;
  };
  if (const Run* run =
          first_with([](const Run& one) { return KnowsAdapter(one) || LacksAdapter(one); })) {
    m_present = KnowsAdapter(*run);
  }
  if (!m_present) modem["present"] = false;
  if (const Run* run = first_with(KnowsAdapter)) SplitAdapter(run->evidence.adapter, modem);
  if (const std::string id = InstanceId(); !id.empty()) modem["instance_id"] = Printable(id);
  modem["oper_status"] = m_log.oper_status;
  if (const Run* run = first_with(KnowsMbim)) {
    m_mbim = run->cause != Cause::kModemNotReachable;
    modem["mbim"] = m_mbim;
  }
  if (const Run* run = first_with(KnowsServices)) {
    m_vendor = run->evidence.vendor_service;
    if (!m_vendor) modem["device_services"] = {"sms"};
  }
  modem["query"] = Answers(false);
  modem["set"] = Answers(true);
  return modem;
}

// The first run that reads the switches tells how they were from the start.
Json Maker::Registry() {
  Json registry = Json::object();
  const auto read = std::ranges::find_if(m_log.runs, [](const LoggedRun& one) {
    return one.run.evidence.verification != Verification::kNotRead;
  });
  if (read == m_log.runs.end()) return registry;
  m_old_switch = read->run.evidence.old_switch;
  m_new_switch = read->run.evidence.new_switch;
  if (m_old_switch) registry[kSwitchKey][kOldName] = *m_old_switch & kLowWord;
  if (m_new_switch) registry[kSwitchKey][kNewName] = *m_new_switch & kLowWord;
  return registry;
}

void Maker::AddSwitch(Json& events, double at, const char* name, std::optional<int64_t>& was,
                      std::optional<int64_t> now) {
  if (was == now) return;
  Assume("a switch changed just before the run that noticed it");
  Json event{{"at", at}, {"do", now ? "registry_set" : "registry_delete"}};
  event["key"] = kSwitchKey;
  event["name"] = name;
  if (now) event["value"] = *now & kLowWord;
  events.push_back(event);
  was = now;
}

Json Maker::Sessions() {
  Json sessions = Json::array();
  std::set<uint32_t> used;
  uint32_t other = 0;
  for (const LoggedSession& session : m_log.sessions) {
    if (session.state == 0) used.insert(session.number);
  }
  for (const LoggedSession& session : m_log.sessions) {
    uint32_t id = session.number;
    if (session.state != 0) {
      while (used.contains(other)) ++other;
      used.insert(id = other);
    }
    sessions.push_back({{"id", id}, {"name", session.name}, {"state", session.state}});
  }
  return sessions;
}

Json Maker::EventLog() {
  Json records = Json::array();
  if (m_log.logon) {
    const int64_t start = m_start.time_since_epoch().count() - m_east;
    records.push_back({{"at", std::min<int64_t>(*m_log.logon - start, 0)}});
  }
  return records;
}

void Maker::AddEvent(Json& events, const LoggedEvent& event) {
  Json json{{"at", At(event.at)}, {"do", event.what}};
  if (event.what == "arrival" && IsModemInterface(event.text) && !m_present) {
    json["do"] = "modem_arrives";
    m_present = true;
  } else if (event.what == "removal" && IsModemInterface(event.text)) {
    json["do"] = "modem_leaves";
    m_present = false;
  } else if (!event.text.empty()) {
    json["name"] = Printable(event.text);
  }
  if (event.what == "battery") json["percent"] = std::min(event.number, 100U);
  if (event.what == "power_event" || event.what == "session_change" || event.what == "control") {
    json["number"] = event.number;
  }
  events.push_back(json);
}

// What a run found otherwise than the one before, and no event tells.
void Maker::AddChange(Json& events, const LoggedRun& one) {
  const double at = At(one.begin - milliseconds(1));
  const Run& run = one.run;
  const bool there = KnowsAdapter(run);
  if ((there || LacksAdapter(run)) && there != m_present) {
    Assume(there ? "the modem came where a run found it again; its arrival adds a trigger"
                 : "the modem left where a run missed it");
    events.push_back({{"at", at}, {"do", there ? "modem_arrives" : "modem_leaves"}});
    m_present = there;
  }
  if (run.evidence.verification != Verification::kNotRead) {
    AddSwitch(events, at, kOldName, m_old_switch, run.evidence.old_switch);
    // One that is off already leaves the other unread.
    if (run.evidence.verification != Verification::kOffByOldSwitch) {
      AddSwitch(events, at, kNewName, m_new_switch, run.evidence.new_switch);
    }
  }
  const bool mbim = run.cause != Cause::kModemNotReachable;
  if (KnowsMbim(run) && mbim != m_mbim) {
    Assume("what Windows offers changed just before the run that noticed it");
    events.push_back({{"at", at}, {"do", "modem_changes"}, {"mbim", mbim}});
    m_mbim = mbim;
  }
  if (KnowsServices(run) && run.evidence.vendor_service != m_vendor) {
    m_vendor = run.evidence.vendor_service;
    Assume("the modem's services changed just before the run that noticed it");
    Json services = m_vendor ? Json{"sms", "vendor"} : Json{"sms"};
    events.push_back({{"at", at}, {"do", "modem_changes"}, {"device_services", services}});
  }
}

Json Maker::Events() {
  Json events = Json::array();
  size_t next = 0;
  std::vector<LoggedEvent> sorted = m_log.events;
  std::ranges::stable_sort(sorted, {}, &LoggedEvent::at);
  const auto add_events_before = [&](LogMoment moment) {
    for (; next < sorted.size() && sorted[next].at <= moment; ++next) {
      AddEvent(events, sorted[next]);
    }
  };
  for (const LoggedRun& one : m_log.runs) {
    add_events_before(one.begin - milliseconds(1));
    // An arrival and the run that it makes share a moment.
    for (; next < sorted.size() && sorted[next].at <= one.begin &&
           (sorted[next].what == "arrival" || sorted[next].what == "removal");
         ++next) {
      AddEvent(events, sorted[next]);
    }
    AddChange(events, one);
  }
  add_events_before(LogMoment::max());
  double last = 0;
  for (Json& event : events) event["at"] = last = std::max(last, event["at"].get<double>());
  return events;
}

Json Maker::Faults() {
  Json faults = Json::array();
  for (const LoggedFault& fault : m_log.faults) {
    Json json{{"call", fault.call}, {"nth", fault.nth}};
    if (fault.how == "null") json["null"] = true;
    if (fault.how == "error") json["error"] = fault.code == 0 ? 5 : fault.code;
    faults.push_back(json);
  }
  return faults;
}

Json Maker::Make() {
  FindZone();
  if (!m_log.begins_whole) Assume("the service was started where the log begins");
  Json notebook = Json::object();
  notebook["firmware"] = Firmware();
  Json modem = Modem();
  AddDevices(notebook, modem);
  notebook["modem"] = modem;
  if (Json registry = Registry(); !registry.empty()) notebook["registry"] = registry;
  notebook["accounts"] = std::min(m_log.accounts, 1000U);
  if (m_log.logon || m_log.logon_missed) notebook["event_log"] = EventLog();
  if (!m_log.sessions.empty()) notebook["sessions"] = Sessions();
  if (m_log.boot_ticks) {
    const double utc =
        static_cast<double>(m_start.time_since_epoch().count() - m_east + kSecondsTo1970);
    notebook["uptime_s"] =
        std::max(0.0, utc - static_cast<double>(*m_log.boot_ticks) / kTicksInASecond);
  }
  if (!m_log.program_path.empty()) notebook["program_path"] = m_log.program_path;
  if (!m_log.program_path.empty()) notebook["program_version"] = m_log.program_version;
  Assume("the other adapters are an Ethernet and a Wi-Fi one");
  Assume("behind what the log tells, the modem is healthy");
  Json json{
      {"title", ""}, {"story", ""}, {"start_time", StartText()}, {"time_zone", ZoneText(m_east)}};
  json["title"] = "Made from a log, " + StartText();
  json["notebook"] = notebook;
  json["events"] = Events();
  if (Json faults = Faults(); !faults.empty()) json["faults"] = faults;
  std::string story = "Assumed:";
  for (const std::string& what : m_assumed) story += " " + what + ";";
  story.back() = '.';
  json["story"] = story;
  return json;
}

}  // namespace

int WriteLogScenario(const LogScenarioRequest& request, const Print& print, const Print& complain) {
  if (!request.file.empty()) {
    if (const std::string problem = WhyNotOurs(request.file, kScenarioMark); !problem.empty()) {
      complain(Printable(problem) + "\n");
      return kBadInput;
    }
  }
  LogNotebook log;
  Explain({request.path}, log);
  for (const std::string& what : log.problems) complain(what + "\n");
  if (log.notebooks != 1 || !log.first) {
    if (log.problems.empty()) {
      complain(Printable(request.path) + ": expected the log of one notebook, with lines in it\n");
    }
    return kBadInput;
  }
  Maker maker(log);
  const std::string text = maker.Make().dump(1, ' ', false, Json::error_handler_t::replace) + "\n";
  std::string assumed;
  for (const std::string& what : maker.Assumed()) assumed += "  assumed   " + what + "\n";
  if (request.file.empty()) {
    print(text);
    complain(assumed);
    return 0;
  }
  if (const std::string problem = WriteOwnFile(request.file, text); !problem.empty()) {
    complain(Printable(problem) + "\n");
    return kNotWritten;
  }
  print("scenario, " + Printable(request.file) + ": " + std::to_string(log.processes) +
        (log.processes == 1 ? " process, " : " processes, ") + std::to_string(log.runs.size()) +
        (log.runs.size() == 1 ? " run\n" : " runs\n") + assumed);
  return 0;
}

}  // namespace nuvelta::support
