#include <array>
#include <set>

#include "notebook/model/unicode.h"
#include "notebook/scenario/scenario_parts.h"
#include "notebook/scenario/scenario_reader.h"
#include "notebook/scenario/scenario_text.h"
#include "platform/fcc_marker.h"

namespace nuvelta::virtual_notebook {

namespace {

constexpr int64_t kSecondsPerDay = 86400;
constexpr int64_t kTenYears = 3653LL * 24 * 3600;
constexpr size_t kLargestLog = 4U << 20U;  // of those that are given with their content

constexpr std::array kInterfaceWords{Word{"ethernet", uint32_t{6}}, Word{"wifi", uint32_t{71}},
                                     Word{"wwan", uint32_t{243}}};

constexpr std::array kRecordWords{
    Word{"error", uint16_t{1}}, Word{"warning", uint16_t{2}}, Word{"information", uint16_t{4}},
    Word{"audit_success", uint16_t{8}}, Word{"audit_failure", uint16_t{16}}};

RegistryContent ReadRegistry(const JsonCursor& at) {
  RegistryContent content;
  for (const auto& [path, key] : at.Members()) {
    CheckRegistryKey(key, path);
    auto& values = content[path];
    for (const auto& [name, value] : key.Members()) values[name] = ReadRegistryValue(value);
  }
  return content;
}

Adapter ReadAdapter(const JsonCursor& at) {
  const JsonObject object(at, {"name", "description", "friendly_name", "if_type", "oper_status",
                               "instance_id", "in_class_key"});
  Adapter adapter;
  adapter.name = object.Need("name").Text();
  object.Read("description", adapter.description);
  object.Read("friendly_name", adapter.friendly_name);
  if (const auto type = object.Find("if_type")) {
    adapter.if_type = type->IsNumber() ? type->Code() : type->Choice(kInterfaceWords);
  }
  object.ReadWhole("oper_status", adapter.oper_status, 1, 7);
  const auto instance = object.Find("instance_id");
  if (instance && !instance->IsNull()) adapter.instance_id = instance->Text();
  object.Read("in_class_key", adapter.in_class_key);
  return adapter;
}

Device ReadDevice(const JsonCursor& at) {
  Device device;
  if (at.IsNull()) {
    device.has_hardware_id = false;
  } else if (at.IsObject()) {
    device.raw_hardware_id = JsonObject(at, {"raw_hex"}).Need("raw_hex").Hex();
  } else {
    device.hardware_id = at.Text();
  }
  return device;
}

EventRecord ReadRecord(const JsonCursor& at) {
  const JsonObject object(at, {"at", "source", "type", "event_id", "category", "raw_hex"});
  EventRecord record;
  ReadRecordMembers(object, record);
  if (const auto time = object.Find("at")) {
    if (record.raw) time->Refuse("given together with \"raw_hex\"", "the time in the bytes alone");
    record.at = time->Seconds(-kTenYears, 0);
  }
  return record;
}

std::vector<Session> ReadSessions(const JsonCursor& at) {
  std::vector<Session> sessions;
  std::set<uint32_t> ids;
  for (const JsonCursor& item : at.Items()) {
    const JsonObject object(item, {"id", "name", "state"});
    Session session;
    object.ReadWhole("id", session.id, 0, 0xFFFFFFFF);
    object.Read("name", session.name);
    object.ReadWhole("state", session.state, 0, 9);
    if (!ids.insert(session.id).second) {
      item.Refuse("session " + std::to_string(session.id) + " is given twice", "each \"id\" once");
    }
    sessions.push_back(session);
  }
  return sessions;
}

void ReadLogSize(const JsonObject& object, const std::string& folder, OldLog& log) {
  constexpr int64_t most = 10LL << 30U;  // sparse files of this size are still cheap
  constexpr std::array<std::string_view, 3> keys{"size_mb", "size_bytes", "raw_file"};
  const auto key = object.OneOf(keys);
  if (!key) {
    object.Where().Refuse("incomplete", "\"size_mb\", \"size_bytes\" or \"raw_file\" too");
  }
  const JsonCursor value = object.Need(*key);
  if (*key == "raw_file") {
    log.content = ReadRawFile(value, folder, kLargestLog);
    log.size = log.content->size();
  } else {
    log.size = static_cast<uint64_t>(*key == "size_mb" ? value.Whole(0, most >> 20U) << 20U
                                                       : value.Whole(0, most));
  }
}

std::vector<OldLog> ReadOldLogs(const JsonCursor& at, const std::string& folder) {
  std::vector<OldLog> logs;
  for (const JsonCursor& item : at.Items()) {
    const JsonObject object(
        item, {"name", "age_days", "size_mb", "size_bytes", "raw_file", "in_use", "count"});
    OldLog log;
    log.age = object.Need("age_days").Days(kTenYears / kSecondsPerDay);
    ReadLogSize(object, folder, log);
    object.Read("in_use", log.in_use);
    uint32_t count = 1;
    object.ReadWhole("count", count, 1, 1000);
    if (const auto name = object.Find("name")) {
      log.name = name->NonEmptyText();
      if (log.name.find_first_of("/\\:*?\"<>|") != std::string::npos || log.name.front() == '.') {
        name->RefuseValue("a file name without a folder");
      }
      if (count > 1) name->Refuse("given to " + std::to_string(count) + " logs", "no \"count\"");
    }
    for (uint32_t i = 0; i < count; ++i) {
      logs.push_back(log);
      log.age += std::chrono::hours(1);
    }
  }
  return logs;
}

std::vector<ListedService> ReadServices(const JsonCursor& at) {
  std::vector<ListedService> services;
  for (const JsonCursor& item : at.Items()) {
    const JsonObject object(item, {"name", "process"});
    ListedService service{.name = object.Need("name").NonEmptyText()};
    object.ReadWhole("process", service.process, 0, 0xFFFFFFFF);
    services.push_back(std::move(service));
  }
  return services;
}

void ReadEnvironment(const JsonCursor& at, std::map<std::string, std::string>& environment) {
  for (const auto& [name, value] : at.Members()) {
    if (name.empty() || name.find('=') != std::string::npos) {
      value.Refuse("no name of a variable", "a name without \"=\"");
    }
    std::erase_if(environment, [folded = Folded(name)](const auto& variable) {
      return Folded(variable.first) == folded;
    });
    if (!value.IsNull()) environment[name] = value.Text();
  }
}

void ReadProgram(const JsonObject& object, Notebook& notebook) {
  if (const auto path = object.Find("program_path")) notebook.program_path = path->NonEmptyText();
  if (const auto version = object.Find("program_version")) {
    notebook.program_version = version->Text();
    if (!notebook.program_version.empty() && !IsVersion(notebook.program_version)) {
      version->RefuseValue("four numbers up to 65535 such as \"1.0.0.1\", or \"\" for none");
    }
  }
  if (const auto key = object.Find("service_key")) notebook.service_key = key->NonEmptyText();
  object.Read("power_settings_need_acceptance", notebook.power_settings_need_acceptance);
}

}  // namespace

void ReadRecordMembers(const JsonObject& object, EventRecord& record) {
  constexpr std::array<std::string_view, 4> named{"source", "type", "event_id", "category"};
  if (const auto raw = object.Find("raw_hex")) {
    for (const std::string_view key : named) {
      if (object.Has(key)) {
        object.Need(key).Refuse("given together with \"raw_hex\"", "either bytes or named fields");
      }
    }
    record.raw = raw->Hex();
    return;
  }
  object.Read("source", record.source);
  if (const auto type = object.Find("type")) {
    record.type = type->IsNumber() ? static_cast<uint16_t>(type->Whole(0, 0xFFFF))
                                   : type->Choice(kRecordWords);
  }
  if (const auto id = object.Find("event_id")) record.event_id = id->Code();
  object.ReadWhole("category", record.category, 0, 0xFFFF);
}

Notebook DefaultNotebook() {
  Notebook notebook;
  notebook.firmware.fcc_content.emplace(platform::kFccMarker.begin(), platform::kFccMarker.end());
  notebook.adapters = {
      {.name = "{0F3C9A52-7B1D-4E86-A0C4-5D2E8F716B39}",
       .description = "Example Gigabit Ethernet Controller",
       .friendly_name = "Ethernet",
       .if_type = 6,
       .oper_status = 2,
       .instance_id = "PCI\\VEN_8086&DEV_15FB&SUBSYS_22D517AA&REV_20\\3&11583659&0&FE"},
      {.name = "{B7A41E08-63F2-4D9C-8E15-C0937D2F5A64}",
       .description = "Example Wi-Fi 6 Adapter",
       .friendly_name = "Wi-Fi",
       .if_type = 71,
       .oper_status = 1,
       .instance_id = "PCI\\VEN_8086&DEV_A0F0&SUBSYS_00748086&REV_20\\3&11583659&0&A3"}};
  notebook.devices = {
      {.hardware_id = "PCI\\VEN_8086&DEV_15FB&SUBSYS_22D517AA&REV_20", .raw_hardware_id = {}},
      {.hardware_id = "PCI\\VEN_8086&DEV_A0F0&SUBSYS_00748086&REV_20", .raw_hardware_id = {}},
      {.hardware_id = "ACPI\\VEN_PNP&DEV_0303", .raw_hardware_id = {}}};
  return notebook;
}

Notebook ReadNotebook(const JsonCursor& at, const std::string& folder) {
  const JsonObject object(
      at, {"firmware", "registry", "adapters", "devices", "modem", "accounts", "event_log",
           "sessions", "services", "old_logs", "environment", "program_path", "program_version",
           "service_key", "uptime_s", "power_settings_need_acceptance"});
  Notebook notebook = DefaultNotebook();
  const auto read_list = [&object](std::string_view key, auto& list, auto read_item) {
    const auto value = object.Find(key);
    if (!value) return;
    list.clear();
    for (const JsonCursor& item : value->Items()) list.push_back(read_item(item));
  };
  if (const auto firmware = object.Find("firmware")) ReadFirmware(*firmware, folder, notebook);
  if (const auto registry = object.Find("registry")) notebook.registry = ReadRegistry(*registry);
  read_list("adapters", notebook.adapters, ReadAdapter);
  read_list("devices", notebook.devices, ReadDevice);
  if (const auto modem = object.Find("modem")) notebook.modem = ReadModem(*modem);
  object.ReadWhole("accounts", notebook.accounts, 0, 1000);
  read_list("event_log", notebook.event_log, ReadRecord);
  if (const auto sessions = object.Find("sessions")) notebook.sessions = ReadSessions(*sessions);
  if (const auto logs = object.Find("old_logs")) notebook.old_logs = ReadOldLogs(*logs, folder);
  if (const auto services = object.Find("services")) notebook.services = ReadServices(*services);
  if (const auto uptime = object.Find("uptime_s")) notebook.uptime = uptime->Seconds(0, kTenYears);
  if (const auto environment = object.Find("environment")) {
    ReadEnvironment(*environment, notebook.environment);
  }
  ReadProgram(object, notebook);
  return notebook;
}

}  // namespace nuvelta::virtual_notebook
