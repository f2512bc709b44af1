#include "wine/story/journal.h"

#include <array>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <type_traits>
#include <utility>

#include "notebook/scenario/scenario_text.h"
#include "wine/story/journal_line.h"

namespace nuvelta::wine {

namespace {

using Json = nlohmann::ordered_json;
using platform::ServiceStatus;
using virtual_notebook::Fault;
using virtual_notebook::ModemCommand;

// The kinds of entries, in the order of Entry's variant.
constexpr std::array kKinds{"process_began",   "process_ended", "event_played", "command",
                            "status",          "call",          "fault_fired",  "launched",
                            "control_refused", "note",          "request"};
static_assert(kKinds.size() == std::variant_size_v<decltype(Entry::what)>);

std::string Hex(const std::vector<uint8_t>& bytes) {
  constexpr const char* kDigits = "0123456789ABCDEF";
  std::string text;
  for (const uint8_t byte : bytes) {
    text += kDigits[byte >> 4U];
    text += kDigits[byte & 15U];
  }
  return text;
}

Json StatusJson(const ServiceStatus& status) {
  return {status.dwServiceType,
          status.dwCurrentState,
          status.dwControlsAccepted,
          status.dwWin32ExitCode,
          status.dwServiceSpecificExitCode,
          status.dwCheckPoint,
          status.dwWaitHint};
}

ServiceStatus StatusOf(const Json& json) {
  const auto number = [&](size_t i) { return json.at(i).get<uint32_t>(); };
  return {.dwServiceType = number(0),
          .dwCurrentState = number(1),
          .dwControlsAccepted = number(2),
          .dwWin32ExitCode = number(3),
          .dwServiceSpecificExitCode = number(4),
          .dwCheckPoint = number(5),
          .dwWaitHint = number(6)};
}

void Put(Json& json, const ProcessBegan& entry) { json["process"] = entry.process; }
void Get(const Json& json, ProcessBegan& entry) { json.at("process").get_to(entry.process); }

void Put(Json& json, const ProcessEnded& entry) {
  json["process"] = entry.process;
  json["killed"] = entry.killed;
  json["exit_code"] = entry.exit_code;
}
void Get(const Json& json, ProcessEnded& entry) {
  json.at("process").get_to(entry.process);
  json.at("killed").get_to(entry.killed);
  json.at("exit_code").get_to(entry.exit_code);
}

void Put(Json& json, const EventPlayed& entry) {
  json["index"] = entry.index;
  json["repetition"] = entry.repetition;
}
void Get(const Json& json, EventPlayed& entry) {
  json.at("index").get_to(entry.index);
  json.at("repetition").get_to(entry.repetition);
}

void Put(Json& json, const CommandMade& entry) {
  const ModemCommand& command = entry.command;
  json["set"] = command.set;
  json["id"] = command.command_id;
  json["payload"] = Hex(command.payload);
  json["made_at_ns"] = command.at.count();
  json["radio_before"] = command.radio_before;
  json["radio_after"] = command.radio_after;
}
void Get(const Json& json, CommandMade& entry) {
  ModemCommand& command = entry.command;
  json.at("set").get_to(command.set);
  json.at("id").get_to(command.command_id);
  auto payload = virtual_notebook::ParseHex(json.at("payload").get<std::string>());
  if (!payload) throw std::runtime_error("the payload is not in hexadecimal digits");
  command.payload = std::move(*payload);
  command.at = Duration(json.at("made_at_ns").get<int64_t>());
  json.at("radio_before").get_to(command.radio_before);
  json.at("radio_after").get_to(command.radio_after);
}

void Put(Json& json, const StatusReported& entry) {
  json["process"] = entry.process;
  json["reported"] = StatusJson(entry.reported);
  json["managers"] = StatusJson(entry.managers);
}
void Get(const Json& json, StatusReported& entry) {
  json.at("process").get_to(entry.process);
  entry.reported = StatusOf(json.at("reported"));
  entry.managers = StatusOf(json.at("managers"));
}

void Put(Json& json, const CallMade& entry) { json["call"] = entry.call; }
void Get(const Json& json, CallMade& entry) { json.at("call").get_to(entry.call); }

void Put(Json& json, const FaultFired& entry) {
  json["call"] = entry.fault.call;
  json["nth"] = entry.fault.nth;
  json["kind"] = static_cast<int>(entry.fault.kind);
  json["code"] = entry.fault.code;
}
void Get(const Json& json, FaultFired& entry) {
  json.at("call").get_to(entry.fault.call);
  json.at("nth").get_to(entry.fault.nth);
  entry.fault.kind = static_cast<Fault::Kind>(json.at("kind").get<int>());
  json.at("code").get_to(entry.fault.code);
}

void Put(Json& json, const Launched& entry) { json["command_line"] = entry.command_line; }
void Get(const Json& json, Launched& entry) { json.at("command_line").get_to(entry.command_line); }

void Put(Json& json, const ControlRefused& entry) {
  json["control"] = entry.control;
  json["event_type"] = entry.event_type;
  json["error"] = entry.error;
}
void Get(const Json& json, ControlRefused& entry) {
  json.at("control").get_to(entry.control);
  json.at("event_type").get_to(entry.event_type);
  json.at("error").get_to(entry.error);
}

void Put(Json& json, const Note& entry) { json["text"] = entry.text; }
void Get(const Json& json, Note& entry) { json.at("text").get_to(entry.text); }

void Put(Json& json, const Request& entry) { json["kind"] = static_cast<int>(entry.kind); }
void Get(const Json& json, Request& entry) {
  entry.kind = static_cast<Request::Kind>(json.at("kind").get<int>());
}

// Reads into the alternative whose kind is `kind`.
template <size_t I = 0>
void GetKind(const Json& json, const std::string& kind, Entry& entry) {
  if constexpr (I == kKinds.size()) {
    throw std::runtime_error("no kind of entry: " + kind);
  } else if (kind != kKinds[I]) {
    GetKind<I + 1>(json, kind, entry);
  } else {
    Get(json, entry.what.emplace<I>());
  }
}

Entry EntryOf(const std::string& line) {
  const Json json = Json::parse(line);
  Entry entry;
  entry.at = Duration(json.at("at_ns").get<int64_t>());
  GetKind(json, json.at("what").get<std::string>(), entry);
  return entry;
}

}  // namespace

void Append(const std::filesystem::path& journal, const Entry& entry) {
  Json json{{"at_ns", entry.at.count()}, {"what", kKinds[entry.what.index()]}};
  std::visit([&](const auto& what) { Put(json, what); }, entry.what);
  AppendLine(journal, json.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n");
}

std::vector<Entry> ReadJournal(const std::filesystem::path& journal) {
  std::ifstream stream(journal, std::ios::binary);
  const std::string text{std::istreambuf_iterator<char>(stream), {}};
  std::vector<Entry> entries;
  size_t begin = 0;
  for (size_t end = text.find('\n'); end != std::string::npos; end = text.find('\n', begin)) {
    try {
      entries.push_back(EntryOf(text.substr(begin, end - begin)));
    } catch (const std::exception& error) {
      throw std::runtime_error(journal.string() + ": line " + std::to_string(entries.size() + 1) +
                               ": " + error.what());
    }
    begin = end + 1;
  }
  return entries;
}

}  // namespace nuvelta::wine
