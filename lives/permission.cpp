#include "lives/permission.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <string_view>

#include "auth/platform_table.h"
#include "lives/life.h"
#include "platform/fcc_marker.h"

namespace nuvelta::explore {

using virtual_notebook::Action;
using virtual_notebook::Device;
using virtual_notebook::Duration;
using virtual_notebook::Event;
using virtual_notebook::Notebook;
using virtual_notebook::RegistryValue;
using virtual_notebook::Scenario;
using virtual_notebook::SmbiosFields;

namespace {

constexpr uint32_t kRegDword = 4;
constexpr const char* kSupport = "SupportVerifyPlatform";
constexpr const char* kDisable = "IsDisableVerify";

int Upper(char letter) { return std::toupper(static_cast<unsigned char>(letter)); }

bool SameText(std::string_view one, std::string_view other) {
  return std::ranges::equal(one, other, {}, Upper, Upper);
}

// Only the first byte of a number counts; anything else is as good as absent.
std::optional<uint8_t> Switch(const RegistryValue& value) {
  if (value.type != kRegDword || value.data.empty()) return {};
  return value.data.front();
}

std::string PlatformKey(const Notebook& notebook) {
  if (!notebook.has_firmware_table) return "_";
  const SmbiosFields& firmware = notebook.firmware;
  std::string name = firmware.system_version;
  if (name.size() < 3) name = firmware.system_family;
  const auto older = std::span(platform_modem_map).first(kCs24Count);
  if (std::ranges::find(older, name, &PlatformEntry::key) != older.end()) return name;
  return name + '_' + firmware.baseboard_product.substr(0, 4);
}

bool HasFccMode(const Notebook& notebook) {
  const auto& content = notebook.firmware.fcc_content;
  if (!notebook.has_firmware_table || !content || notebook.firmware.fcc_length != 5) return false;
  if (content->size() != platform::kFccMarkerSize) return false;
  const auto upper = [](uint8_t byte) { return Upper(static_cast<char>(byte)); };
  // The last byte is not compared.
  return std::equal(content->begin(), content->end() - 1, platform::kFccMarker.begin(),
                    [&](uint8_t one, uint8_t other) { return upper(one) == upper(other); });
}

}  // namespace

Permission::Permission(const Scenario& scenario)
    : m_platform_key(PlatformKey(scenario.notebook)),
      m_fcc_mode(HasFccMode(scenario.notebook)),
      m_devices(scenario.notebook.devices) {
  State state{.since = Duration::min(),
              .support_verify = {},
              .disable_verify = {},
              .modem_id = scenario.notebook.modem.hardware_id,
              .modem_present = scenario.notebook.modem.present};
  const auto edit = [&](const std::string& key, const std::string& name,
                        std::optional<uint8_t> value) {
    if (!SameText(key, kSettingsKey)) return;
    if (SameText(name, kSupport)) state.support_verify = value;
    if (SameText(name, kDisable)) state.disable_verify = value;
  };
  for (const auto& [key, values] : scenario.notebook.registry) {
    for (const auto& [name, value] : values) edit(key, name, Switch(value));
  }
  m_states.push_back(state);
  for (const Event& event : scenario.events) {
    const Action& action = event.action;
    using Kind = Action::Kind;
    if (action.kind == Kind::kRegistrySet) {
      edit(action.text, action.value_name, Switch(action.value));
    } else if (action.kind == Kind::kRegistryDelete) {
      edit(action.text, action.value_name, std::nullopt);
    } else if (action.kind == Kind::kModemArrives || action.kind == Kind::kModemLeaves) {
      state.modem_present = action.kind == Kind::kModemArrives;
    } else if (action.kind == Kind::kModemChanges && action.modem.hardware_id) {
      state.modem_id = *action.modem.hardware_id;
    } else {
      continue;
    }
    // Repetitions of these change nothing more.
    state.since = event.at;
    m_states.push_back(state);
  }
}

std::string Permission::DeviceId(const State& state) const {
  std::vector<std::string> ids;
  for (const Device& device : m_devices) {
    if (device.has_hardware_id) ids.push_back(device.hardware_id);
  }
  if (state.modem_present) ids.push_back(state.modem_id);
  std::string found;
  for (const std::string& id : ids) {
    if (id.find("VEN_2F1B") != std::string::npos) return id.substr(0, 33);
    if (id.find("VID_3A5E") != std::string::npos) found = id.substr(0, 21);
  }
  return found;
}

bool Permission::PlatformAllows(const std::string& device_id) const {
  bool listed = false;
  for (const PlatformEntry& entry : platform_modem_map) {
    if (!SameText(entry.key, m_platform_key)) continue;
    listed = true;
    for (const std::string_view id : entry.hwids) {
      if (SameText(id, device_id)) return true;
    }
  }
  return !listed;
}

bool Permission::Allows(const State& state) const {
  if (state.support_verify == 0 || state.disable_verify == 1) return true;
  return m_fcc_mode && PlatformAllows(DeviceId(state));
}

bool Permission::AllowedBetween(Duration from, Duration to) const {
  for (size_t i = 0; i < m_states.size(); ++i) {
    const bool begun = m_states[i].since <= to;
    const bool over = i + 1 < m_states.size() && m_states[i + 1].since < from;
    if (begun && !over && Allows(m_states[i])) return true;
  }
  return false;
}

bool Permission::AllowedAtEnd() const { return Allows(m_states.back()); }

bool HasExpectedAdapter(const Notebook& notebook) {
  constexpr std::array<std::string_view, 4> kExpected{
      "USB\\VID_3A5E&PID_4A10&MI_00", "USB\\VID_3A5E&PID_4A11&MI_00",
      "USB\\VID_3A5E&PID_0A31&MI_00", "USB\\VID_3A5E&PID_0A32&MI_00"};
  return std::ranges::any_of(
      kExpected, [&](std::string_view id) { return notebook.modem.instance_id.starts_with(id); });
}

}  // namespace nuvelta::explore
