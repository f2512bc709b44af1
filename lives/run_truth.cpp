#include "lives/run_truth.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <string_view>

#include "auth/platform_table.h"
#include "platform/fcc_marker.h"

namespace nuvelta::explore {

using platform::AsyncStatus;
using virtual_notebook::Notebook;
using virtual_notebook::SmbiosFields;

namespace {

constexpr size_t kComparedLength = 27;  // of a device instance id
constexpr std::array<std::string_view, 4> kExpectedModems{
    "USB\\VID_3A5E&PID_4A10&MI_00", "USB\\VID_3A5E&PID_4A11&MI_00", "USB\\VID_3A5E&PID_0A31&MI_00",
    "USB\\VID_3A5E&PID_0A32&MI_00"};

bool Holds(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

int Raised(char letter) { return std::toupper(static_cast<unsigned char>(letter)); }

bool SameButForCase(std::string_view one, std::string_view other) {
  return std::ranges::equal(one, other, {}, Raised, Raised);
}

// Null when the modem is there and expected.
const char* WhyNotPresent(const RunAnswers& answers) {
  if (!answers.adapter_memory) return "adapters_not_read";
  if (!answers.adapters_read || !answers.adapter) return "no_adapter";
  const auto key = std::ranges::find_if(answers.adapter_keys, [&](const AdapterKey& entry) {
    return entry.adapter && entry.device && Holds(*entry.adapter, *answers.adapter);
  });
  if (key == answers.adapter_keys.end() || key->device->empty()) return "no_instance_id";
  const std::string id = key->device->substr(0, kComparedLength);
  const bool expected = std::ranges::any_of(
      kExpectedModems, [&](std::string_view modem) { return Holds(modem, id); });
  return expected ? nullptr : "adapter_not_expected";
}

const char* WhyNotReachable(const RunAnswers& answers) {
  if (answers.visits.empty() || answers.visits[0].raised) return "mobile_broadband_failed";
  return answers.visits[0].modem ? nullptr : "modem_not_reachable";
}

// What each of the two readings that it takes did not give is empty.
std::string PlatformKeyOf(const RunAnswers& answers, const SmbiosFields& fields) {
  const auto whole = [&](size_t reading) {
    return reading < answers.firmware.size() && answers.firmware[reading].IsWhole();
  };
  std::string name = whole(0) ? fields.system_version : "";
  if (name.size() < 3) name = whole(0) ? fields.system_family : "";
  const auto older = std::span(platform_modem_map).first(kCs24Count);
  if (std::ranges::find(older, name, &PlatformEntry::key) != older.end()) return name;
  return name + '_' + (whole(1) ? fields.baseboard_product.substr(0, 4) : "");
}

// The maker's first PCI device, or else its last USB device.
std::string MakersDevice(const std::vector<std::string>& ids) {
  std::string found;
  for (const std::string& id : ids) {
    if (Holds(id, "VEN_2F1B")) return id.substr(0, 33);
    if (Holds(id, "VID_3A5E")) found = id.substr(0, 21);
  }
  return found;
}

const char* WhyPlatformForbids(const RunAnswers& answers, const Notebook& notebook) {
  const std::string key = PlatformKeyOf(answers, notebook.firmware);
  const auto* const entry = std::ranges::find_if(
      platform_modem_map, [&](const auto& listed) { return SameButForCase(listed.key, key); });
  if (entry == platform_modem_map.end()) return nullptr;
  if (!answers.devices_read) return "devices_not_read";
  const std::string device = MakersDevice(answers.device_ids);
  if (device.empty()) return "no_device_id";
  const bool allowed = std::ranges::any_of(
      entry->hwids, [&](std::string_view id) { return SameButForCase(id, device); });
  return allowed ? nullptr : "modem_not_allowed";
}

// The reading for it is the last of a run.
const char* WhyNoFccMode(const RunAnswers& answers, const Notebook& notebook) {
  if (answers.firmware.empty() || !answers.firmware.back().IsWhole()) return "firmware_not_read";
  const auto& content = notebook.firmware.fcc_content;
  if (!content || notebook.firmware.fcc_length != 5) return "fcc_structure_missing";
  const std::string_view has(reinterpret_cast<const char*>(content->data()), content->size());
  const std::string_view marker(reinterpret_cast<const char*>(platform::kFccMarker.data()),
                                platform::kFccMarkerSize);
  // The last byte is not compared.
  const bool same =
      has.size() == marker.size() &&
      SameButForCase(has.substr(0, has.size() - 1), marker.substr(0, marker.size() - 1));
  return same ? nullptr : "fcc_content_wrong";
}

const char* WhyForbidden(const RunAnswers& answers, const Notebook& notebook) {
  if (answers.support_verify == 0 || answers.disable_verify == 1) return nullptr;
  if (const char* const why = WhyPlatformForbids(answers, notebook)) return why;
  return WhyNoFccMode(answers, notebook);
}

const char* WhyNoSession(const ModemVisit& visit) {
  if (visit.raised) return "platform_exception";
  if (!visit.modem) return "modem_vanished";
  if (!visit.vendor_listed) return "vendor_service_missing";
  if (!visit.service) return "vendor_service_refused";
  return visit.session ? nullptr : "session_refused";
}

const char* OutcomeOfSet(ModemVisit visit) {
  visit.vendor_listed = true;  // not asked for again
  if (const char* const why = WhyNoSession(visit)) return why;
  if (visit.end == AsyncStatus::kStarted) return "set_not_answered";
  if (visit.end != AsyncStatus::kCompleted) return "set_failed";
  return visit.status == 0U ? "switched_on" : "set_refused";
}

const char* OutcomeOfCommands(const RunAnswers& answers) {
  if (answers.visits.size() < 2) return "no query";
  const ModemVisit& query = answers.visits[1];
  if (const char* const why = WhyNoSession(query)) return why;
  if (query.end == AsyncStatus::kStarted) return "query_not_answered";
  if (query.end != AsyncStatus::kCompleted) return "query_failed";
  if (query.status != 0U) return "query_refused";
  if (!query.level) return "query_too_short";
  if (*query.level == -1) return "modem_says_unsupported";
  if (*query.level == -2) return "modem_not_ready";
  if (*query.level == 1) return "already_on";
  return answers.visits.size() < 3 ? "no set command" : OutcomeOfSet(answers.visits[2]);
}

}  // namespace

bool KnowsFirmware(const Notebook& notebook) {
  return !notebook.raw_firmware && notebook.firmware.system_length == SmbiosFields{}.system_length;
}

const char* CauseOf(const RunAnswers& answers, const Notebook& notebook) {
  if (const char* const why = WhyNotPresent(answers)) return why;
  if (const char* const why = WhyNotReachable(answers)) return why;
  if (const char* const why = WhyForbidden(answers, notebook)) return why;
  return OutcomeOfCommands(answers);
}

}  // namespace nuvelta::explore
