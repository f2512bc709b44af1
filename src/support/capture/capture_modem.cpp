#include "support/capture/capture_modem.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstring>
#include <string_view>

#include "common/text_util.h"
#include "modem/hardware_id.h"
#include "platform/network.h"
#include "platform/vendor_service.h"
#include "support/doctor_words.h"
#include "support/wide_text.h"

namespace nuvelta::support {

namespace {

using Json = nlohmann::ordered_json;
using platform::AsyncStatus;

// "USB\VID_3A5E&PID_4A10", by which a device and its interface are known alike.
constexpr size_t kDeviceFront = 21;

// An id that a scenario can say as a text: it ends.
std::optional<std::string> FirstId(const std::optional<Bytes>& property) {
  if (!property) return std::nullopt;
  const std::u16string wide = WideFrom(*property);
  if (property->size() < (wide.size() + 1) * sizeof(char16_t)) return std::nullopt;
  return Utf8Of(wide);
}

// The adapter that the service would take, else the last one; the first one that it looks
// at may be another's.
std::optional<size_t> ModemAdapterOf(const CapturedNotebook& notebook) {
  std::optional<size_t> found;
  bool expected = false;
  for (size_t i = 0; i < notebook.adapters.size(); ++i) {
    const CapturedAdapter& adapter = notebook.adapters[i];
    if (adapter.type != platform::kIfTypeWwanPp || !adapter.instance_id) continue;
    const bool is_expected = IsExpectedMbimHwid(CutMbimHwid(*adapter.instance_id));
    if (is_expected || !expected) found = i;
    expected = expected || is_expected;
  }
  return found;
}

// A device of the adapter's maker and model, else one of the maker, else the last one.
std::optional<size_t> ModemDeviceOf(const CapturedNotebook& notebook,
                                    const CapturedAdapter& adapter) {
  std::optional<size_t> found;
  int best = -1;
  const std::string_view front = std::string_view(*adapter.instance_id).substr(0, kDeviceFront);
  for (size_t i = 0; i < notebook.devices.size(); ++i) {
    const std::optional<std::string> id = FirstId(notebook.devices[i]);
    if (!id) continue;
    int likeness = ClassifyHwid(*id) == HwidOwner::kOther ? 0 : 1;
    if (EqualIgnoreCase(std::string_view(*id).substr(0, kDeviceFront), front)) likeness = 2;
    if (likeness < best) continue;
    best = likeness;
    found = i;
  }
  return found;
}

// What the modem answered, for ever.
Json AnswerOf(const QueryRecord& query) {
  Json answer = Json::object();
  if (!query.sent || (!query.status && !query.failed_call.empty())) {
    answer["hresult"] = HexCode(query.failure);
  } else if (!query.state) {
    answer["answer"] = "never";
  } else if (*query.state == AsyncStatus::kCanceled) {
    answer["answer"] = "canceled";
  } else if (*query.state == AsyncStatus::kError) {
    answer["answer"] = "error";
  } else if (query.status.value_or(0) != 0) {
    answer["status"] = HexCode(*query.status);
  } else if (!query.data) {
    answer["answer"] = "no_data";
  } else {
    answer["data"] = Hex(*query.data);
  }
  answer["times"] = "always";
  return answer;
}

std::optional<int32_t> LevelOf(const QueryRecord& query) {
  if (query.state != AsyncStatus::kCompleted || query.status != 0U || !query.data) return {};
  if (query.data->size() != sizeof(int32_t)) return {};
  int32_t level = 0;
  std::memcpy(&level, query.data->data(), sizeof level);
  return level;
}

// A failing call that a scenario can make fail.
bool IsFailedSend(const QueryRecord& query) {
  return query.failed_call == "CommandSession::SendQueryCommandAsync" && query.failure >> 31U != 0;
}

void AddAnswers(const CapturedModem& modem, Json& json, ModemScenario& scenario) {
  const QueryRecord& query = modem.query;
  scenario.assumed.emplace_back("the modem obeys a set command");
  if (!query.sent && !IsFailedSend(query)) {
    scenario.assumed.emplace_back("the radio is at level 4 (off): the modem was not asked");
    return;
  }
  if (query.took) json["latency_ms"] = (query.took->count() + 500'000) / 1'000'000;
  const bool read = query.status || !query.failed_call.empty();
  if (query.state == AsyncStatus::kCompleted && !read) {
    scenario.assumed.emplace_back(
        "the radio is at level 4 (off): the modem's answer came too late to be read");
    // Said, for at the very end of the service's two seconds either may happen.
    json["radio"] = 4;
    return;
  }
  if (const auto level = LevelOf(query)) {
    json["radio"] = *level;
    return;
  }
  json["query"] = Json::array({AnswerOf(query)});
  scenario.assumed.emplace_back("the modem answers every query as it has answered this one");
}

void AddPlaces(const CapturedNotebook& notebook, const ModemPlaces& places, Json& json) {
  const auto add = [&](const char* key, std::optional<size_t> place, size_t count) {
    if (place && *place + 1 < count) json[key] = *place;
  };
  add("adapter_place", places.adapter, notebook.adapters.size());
  add("device_place", places.device, notebook.devices.size());
}

Json ServiceIds(const CapturedModem& modem) {
  Json services = Json::array();
  for (const std::string& id : modem.services) {
    services.push_back(id == platform::kVendorServiceText ? "vendor" : id);
  }
  return services;
}

}  // namespace

ModemScenario MakeModemScenario(const CapturedNotebook& notebook) {
  ModemScenario scenario;
  Json json{{"present", false}};
  scenario.places.adapter = ModemAdapterOf(notebook);
  if (scenario.places.adapter) {
    const CapturedAdapter& adapter = notebook.adapters[*scenario.places.adapter];
    scenario.places.device = ModemDeviceOf(notebook, adapter);
    json = {{"adapter_name", adapter.name},
            {"description", adapter.description},
            {"friendly_name", adapter.friendly_name},
            {"oper_status", std::clamp<uint32_t>(adapter.state, 1, 7)},
            {"instance_id", *adapter.instance_id}};
    const auto device = scenario.places.device;
    json["hardware_id"] = device ? *FirstId(notebook.devices[*device]) : std::string();
    AddPlaces(notebook, scenario.places, json);
    json["mbim"] = notebook.modem.offered || notebook.modem.error != 0;
    if (notebook.modem.offered && notebook.modem.error == 0) {
      json["device_services"] = ServiceIds(notebook.modem);
    }
    if (notebook.modem.error >> 31U != 0 && !notebook.modem.failed_call.empty()) {
      scenario.faults = Json::array({{{"call", notebook.modem.failed_call},
                                      {"hresult", HexCode(notebook.modem.error)},
                                      {"count", "always"}}})
                            .dump();
    }
    if (notebook.modem.offered) AddAnswers(notebook.modem, json, scenario);
  } else if (notebook.modem.offered) {
    scenario.assumed.emplace_back(
        "there is no modem: Windows offers one, but no adapter with a device is its");
  }
  scenario.modem = json.dump();
  return scenario;
}

}  // namespace nuvelta::support
