#include <nlohmann/json.hpp>

#include "platform/fcc_marker.h"
#include "support/doctor.h"
#include "support/doctor_words.h"
#include "support/printable.h"

namespace nuvelta::support {

namespace {

using Object = nlohmann::ordered_json;

Object TextOrNull(const std::string& text) {
  return text.empty() ? Object() : Object(Printable(text));
}

template <class Number>
Object NumberOrNull(const std::optional<Number>& value) {
  return value ? Object(*value) : Object();
}

// A step that was seen has the error null.
Object ErrorOrNull(uint32_t error) { return error == 0 ? Object() : Object(error); }

Object ServiceObject(const ServiceFacts& facts) {
  Object json{
      {"name", Printable(facts.name)}, {"error", ErrorOrNull(facts.error)}, {"installed", nullptr}};
  const bool seen = facts.error == 0;
  if (seen || facts.error == platform::kErrorServiceDoesNotExist) json["installed"] = seen;
  json["service_state"] = seen ? Object(ServiceStateName(facts.process.dwCurrentState)) : Object();
  json["process"] =
      seen && facts.process.dwProcessId != 0 ? Object(facts.process.dwProcessId) : Object();
  json["exit_code"] = seen ? Object(facts.process.dwWin32ExitCode) : Object();
  json["since"] = TextOrNull(facts.since);
  json["since_error"] = ErrorOrNull(facts.since_error);
  const bool configured = facts.configuration_error == 0;
  json["configuration_error"] = ErrorOrNull(facts.configuration_error);
  json["start_type"] =
      configured ? Object(StartTypeName(facts.configuration.dwStartType)) : Object();
  json["account"] = TextOrNull(facts.account);
  json["image"] = TextOrNull(facts.image);
  json["recovery_error"] = ErrorOrNull(facts.recovery_error);
  json["recovery"] = Object::array();
  for (const platform::ServiceAction& action : facts.recovery.actions) {
    json["recovery"].push_back({{"action", ActionName(action.Type)}, {"after_ms", action.Delay}});
  }
  json["failures_forgotten_after_s"] = facts.recovery.dwResetPeriod;
  return json;
}

Object LogFolderObject(const LogFolderFacts& facts) {
  Object json{{"path", Printable(facts.path)},
              {"error", ErrorOrNull(facts.error)},
              {"owner", TextOrNull(facts.owner)},
              {"has_list", facts.error == 0 ? Object(facts.has_list) : Object()},
              {"rights", Object::array()}};
  for (const LogFolderFacts::Entry& entry : facts.entries) {
    json["rights"].push_back({{"account", Printable(entry.account)},
                              {"allows", entry.allows},
                              {"mask", HexCode(entry.mask)},
                              {"rights", AccessName(entry.mask)},
                              {"inherited", entry.inherited},
                              {"below_only", entry.inherit_only}});
  }
  json["logs"] = facts.logs;
  json["newest_log"] = TextOrNull(facts.newest);
  json["newest_log_error"] = ErrorOrNull(facts.newest_error);
  const bool sized = facts.logs > 0 && facts.newest_error == 0;
  json["newest_log_bytes"] = sized ? Object(facts.newest_size) : Object();
  return json;
}

Object SwitchesObject(const Diagnosis& all) {
  Object json{{"values", Object::array()}};
  for (const SwitchFacts& facts : all.switches) {
    const bool stored = facts.error == 0;
    json["values"].push_back({{"key", facts.key},
                              {"name", facts.name},
                              {"error", ErrorOrNull(facts.error)},
                              {"type", stored ? Object(RegistryTypeName(facts.type)) : Object()},
                              {"data", stored ? Object(Hex(facts.data)) : Object()},
                              {"read_as", facts.read == -1 ? Object() : Object(facts.read)},
                              {"switches_checks_off", SwitchesChecksOff(facts)},
                              {"meaning", MeaningOf(facts)}});
  }
  return json;
}

Object AdaptersObject(const AdapterListFacts& facts) {
  Object json{{"error", ErrorOrNull(facts.error)}, {"adapters", Object::array()}};
  for (const AdapterFacts& adapter : facts.adapters) {
    json["adapters"].push_back({{"name", Printable(adapter.name)},
                                {"description", Printable(adapter.description)},
                                {"friendly_name", Printable(adapter.friendly_name)},
                                {"type", adapter.type},
                                {"operational_state", AdapterStateName(adapter.state)},
                                {"examined", adapter.examined}});
  }
  json["class_key_error"] = ErrorOrNull(facts.class_error);
  json["class_key_entry"] = TextOrNull(facts.subkey);
  json["instance_id"] = TextOrNull(facts.instance_id);
  json["compared_id"] = TextOrNull(facts.compared);
  json["expected"] = facts.expected;
  return json;
}

Object FirmwareObject(const FirmwareFacts& facts) {
  return {{"error", ErrorOrNull(facts.error)},
          {"table", facts.has_table},
          {"bytes", facts.size},
          {"smbios", std::to_string(facts.major) + "." + std::to_string(facts.minor)},
          {"manufacturer", Printable(facts.manufacturer)},
          {"product", Printable(facts.product)},
          {"version", Printable(facts.version)},
          {"family", Printable(facts.family)},
          {"board_product", Printable(facts.board_product)}};
}

Object PlatformObject(const FirmwareFacts& facts) {
  return {{"key", Printable(facts.key)},
          {"cs24", facts.cs24},
          {"by_family", facts.by_family},
          {"listed", facts.listed},
          {"allowed_ids", facts.allowed}};
}

Object DevicesObject(const DeviceListFacts& facts) {
  Object json{{"error", ErrorOrNull(facts.error)},
              {"present", facts.devices},
              {"marked", Object::array()},
              {"id", TextOrNull(facts.id)}};
  for (const DeviceFacts& device : facts.marked) {
    json["marked"].push_back({{"number", device.number},
                              {"hardware_id", Printable(device.hardware_id)},
                              {"bus", device.owner == HwidOwner::kMakerPci ? "PCI" : "USB"},
                              {"decides", device.decides}});
  }
  return json;
}

Object FccObject(const FccFacts& facts) {
  return {{"declared", facts.declared},
          {"structure_length", facts.structure ? Object(facts.length) : Object()},
          {"content_length", facts.right_length ? Object(facts.content_length) : Object()},
          {"content", facts.right_length ? Object(Hex(facts.content)) : Object()},
          {"closed", facts.closed},
          {"expected_length", platform::kFccMarkerSize},
          {"expected_content", Hex(platform::kFccMarker)}};
}

Object ModemObject(const ModemFacts& facts) {
  return {{"error", ErrorOrNull(facts.error)},
          {"failed_call", TextOrNull(facts.failed_call)},
          {"present", facts.present},
          {"services", facts.services},
          {"vendor_service", facts.vendor_service}};
}

Object QueryObject(const ModemFacts& facts) {
  const QueryRecord& query = facts.query;
  return {{"asked", facts.asked},
          {"session", query.session},
          {"sent", query.sent},
          {"payload", query.sent ? Object(Hex(query.payload)) : Object()},
          {"end", query.sent ? Object(QueryStateName(query)) : Object()},
          {"milliseconds", NumberOrNull(facts.milliseconds)},
          {"status", NumberOrNull(query.status)},
          {"data", query.data ? Object(Hex(*query.data)) : Object()},
          {"level", NumberOrNull(facts.level)},
          {"failed_call", TextOrNull(query.failed_call)},
          {"failure", ErrorOrNull(query.failure)}};
}

}  // namespace

std::string DiagnosisJson(const Diagnosis& all) {
  const StepStates states = StatesOf(all);
  Object json{{"type", "doctor"}, {"time", all.time}};
  const auto add = [&](const char* step, StepState state, const Object& facts) {
    json[step] = {{"state", StepStateName(state)}};
    json[step].update(facts);
  };
  add("service", states.service, ServiceObject(all.service));
  add("log_folder", states.log_folder, LogFolderObject(all.log_folder));
  add("switches", states.switches, SwitchesObject(all));
  add("adapters", states.adapters, AdaptersObject(all.network));
  add("firmware", states.firmware, FirmwareObject(all.firmware));
  add("platform", states.platform, PlatformObject(all.firmware));
  add("devices", states.devices, DevicesObject(all.devices));
  add("fcc_mode", states.fcc_mode, FccObject(all.fcc));
  add("modem", states.modem, ModemObject(all.modem));
  add("query", states.query, QueryObject(all.modem));
  const CauseInfo& info = InfoOf(all.run.cause);
  json["verdict"] = IdOf(info.verdict);
  json["cause"] = info.id;
  json["reason"] = info.reason;
  json["advice"] = info.advice;
  json["deciding_line"] = TextOrNull(all.run.deciding);
  return json.dump(-1, ' ', false, Object::error_handler_t::replace) + "\n";
}

}  // namespace nuvelta::support
