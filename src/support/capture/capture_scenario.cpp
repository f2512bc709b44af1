#include "support/capture/capture_scenario.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "common/service_name.h"
#include "support/capture/capture_modem.h"
#include "support/doctor_words.h"
#include "support/wide_text.h"

namespace nuvelta::support {

namespace {

using Json = nlohmann::ordered_json;

constexpr const char* kDefaultProgramData = "C:\\ProgramData";
constexpr const char* kDefaultProgram =
    "C:\\Program Files\\Nuvelta Wireless\\hx2208_auth_service.exe";
constexpr const char* kDefaultVersion = "1.0.0.1";
constexpr double kSecondsADay = 86'400;

// A POSIX zone counts to the west.
std::string ZoneOf(int32_t east) {
  if (east == 0) return "UTC";
  const int32_t minutes = std::abs(east) / 60;
  std::array<char, 24> text{};
  std::snprintf(text.data(), text.size(), "LCL%s%d:%02d", east > 0 ? "-" : "", minutes / 60,
                minutes % 60);
  return text.data();
}

Json RegistryOf(const CapturedNotebook& notebook) {
  Json registry = Json::object();
  for (const CapturedValue& value : notebook.registry) {
    Json& json = registry[value.key][value.name];
    if (value.type == 4 && value.data.size() == sizeof(uint32_t)) {
      uint32_t number = 0;
      std::memcpy(&number, value.data.data(), sizeof number);
      json = number;
    } else {
      json = {{"type", value.type}, {"hex", Hex(value.data)}};
    }
  }
  return registry;
}

Json AdapterOf(const CapturedAdapter& adapter) {
  Json json{{"name", adapter.name},
            {"description", adapter.description},
            {"friendly_name", adapter.friendly_name},
            {"if_type", adapter.type},
            {"oper_status", std::clamp<uint32_t>(adapter.state, 1, 7)}};
  if (adapter.instance_id) json["instance_id"] = *adapter.instance_id;
  if (!adapter.in_class_key) json["in_class_key"] = false;
  return json;
}

// A text stands for its units and two zeros.
Json DeviceOf(const std::optional<Bytes>& property) {
  if (!property) return nullptr;
  const std::string text = Utf8Of(WideFrom(*property));
  const std::string bytes = WideBytes(WideOf(text)) + std::string(4, '\0');
  if (std::ranges::equal(bytes, *property, [](char one, uint8_t other) {
        return static_cast<uint8_t>(one) == other;
      })) {
    return text;
  }
  return {{"raw_hex", Hex(*property)}};
}

Json SessionsOf(const CapturedNotebook& notebook) {
  Json sessions = Json::array();
  for (const CapturedSession& session : notebook.sessions) {
    sessions.push_back(
        {{"id", session.id}, {"name", session.name}, {"state", std::min(session.state, 9U)}});
  }
  return sessions;
}

Json ServicesOf(const CapturedNotebook& notebook) {
  Json services = Json::array();
  // One that is not installed is, where the scenario is played.
  const std::string own(kServiceName.begin(), kServiceName.end());
  const bool listed =
      std::ranges::find(notebook.services, own, &CapturedService::name) != notebook.services.end();
  for (const CapturedService& service : notebook.services) {
    services.push_back({{"name", service.name}});
    if (service.process != 0) services.back()["process"] = service.process;
  }
  if (!listed) services.push_back({{"name", own}});
  return services;
}

Json LogsOf(const CapturedNotebook& notebook, CaptureFiles& out) {
  Json logs = Json::array();
  for (const CapturedLog& log : notebook.logs) {
    // The half keeps the second when the days are counted back.
    Json json{{"name", log.name},
              {"age_days", (static_cast<double>(log.age) + 0.5) / kSecondsADay}};
    if (log.content) {
      const std::string path = "logs/" + log.name;
      json["raw_file"] = path;
      out.files[path] = *log.content;
    } else {
      json["size_bytes"] = log.size;
    }
    logs.push_back(json);
  }
  return logs;
}

void AddLists(const CapturedNotebook& notebook, const ModemPlaces& places, Json& json) {
  json["adapters"] = Json::array();
  for (size_t i = 0; i < notebook.adapters.size(); ++i) {
    if (i != places.adapter) json["adapters"].push_back(AdapterOf(notebook.adapters[i]));
  }
  json["devices"] = Json::array();
  for (size_t i = 0; i < notebook.devices.size(); ++i) {
    if (i != places.device) json["devices"].push_back(DeviceOf(notebook.devices[i]));
  }
  json["event_log"] = Json::array();
  for (const Bytes& record : notebook.records) {
    json["event_log"].push_back({{"raw_hex", Hex(record)}});
  }
}

Json NotebookOf(const CapturedNotebook& notebook, const ModemScenario& modem, CaptureFiles& out) {
  Json json = Json::object();
  json["firmware"] = nullptr;
  if (notebook.firmware) {
    json["firmware"] = {{"raw_file", "firmware.bin"}};
    out.files["firmware.bin"] = std::string(notebook.firmware->begin(), notebook.firmware->end());
  }
  json["modem"] = Json::parse(modem.modem);
  if (!notebook.registry.empty()) json["registry"] = RegistryOf(notebook);
  AddLists(notebook, modem.places, json);
  json["accounts"] = std::min(notebook.accounts.value_or(0), 1000U);
  json["sessions"] = SessionsOf(notebook);
  if (!notebook.services.empty()) json["services"] = ServicesOf(notebook);
  if (notebook.uptime_seen) json["uptime_s"] = notebook.uptime;
  json["old_logs"] = LogsOf(notebook, out);
  if (notebook.program_data.empty()) {
    json["environment"]["programdata"] = nullptr;
  } else if (notebook.program_data != kDefaultProgramData) {
    json["environment"]["programdata"] = notebook.program_data;
  }
  // Under Wine the program lies where it is installed: only what is unusual is said.
  if (!notebook.program_path.empty() && notebook.program_path != kDefaultProgram) {
    json["program_path"] = notebook.program_path;
  }
  if (!notebook.program_path.empty() && notebook.program_version != kDefaultVersion) {
    json["program_version"] = notebook.program_version;
  }
  return json;
}

}  // namespace

CaptureFiles MakeCaptureFiles(const CapturedNotebook& notebook) {
  CaptureFiles out;
  const ModemScenario modem = MakeModemScenario(notebook);
  out.assumed = modem.assumed;
  if (notebook.east_of_utc != 0) {
    out.assumed.emplace_back("the clock stays as far from UTC as it is now, all the year");
  }
  Json json{{"title", "Captured notebook, " + notebook.time},
            {"story", "A notebook as it was found; the service is started on it."},
            {"start_time", notebook.time},
            {"time_zone", ZoneOf(notebook.east_of_utc)}};
  json["notebook"] = NotebookOf(notebook, modem, out);
  json["events"] = {{{"at", 0}, {"do", "start"}}};
  if (!modem.faults.empty()) json["faults"] = Json::parse(modem.faults);
  out.files[kScenarioFile] = json.dump(1, ' ', false, Json::error_handler_t::replace) + "\n";
  return out;
}

}  // namespace nuvelta::support
