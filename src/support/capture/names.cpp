#include "support/capture/names.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "auth/platform_table.h"
#include "common/log_folder.h"
#include "common/scope_exit.h"
#include "common/service_name.h"
#include "common/text_util.h"
#include "modem/hardware_id.h"
#include "platform/environment.h"
#include "platform/fcc_marker.h"
#include "platform/platform.h"
#include "platform/registry.h"
#include "support/capture/event_record.h"
#include "support/capture/read_notebook.h"
#include "support/capture/smbios_names.h"
#include "support/wide_text.h"

namespace nuvelta::support {

namespace {

constexpr size_t kShortestSerial = 6;

// Accounts that every notebook has; in lower case.
constexpr std::array<std::string_view, 12> kNobody{
    "public", "default",      "all users",      "default user",  "administrator", "guest",
    "system", "localservice", "networkservice", "systemprofile", "localsystem",   "administrators"};

std::string LowerOf(std::string_view text) {
  std::string lower(text);
  std::ranges::transform(lower, lower.begin(), ToLower);
  return lower;
}

void AddAccount(std::string_view name, std::vector<FoundName>& names) {
  if (name.empty() || std::ranges::find(kNobody, LowerOf(name)) != kNobody.end()) return;
  names.push_back({.kind = NameKind::kAccount, .text = std::string(name)});
}

// The folders of accounts in paths.
void AddProfiles(std::string_view text, std::vector<FoundName>& names, bool ansi) {
  constexpr std::string_view kUsers = "\\users\\";
  const std::string lower = LowerOf(text);
  for (size_t at = lower.find(kUsers); at != std::string::npos; at = lower.find(kUsers, at + 1)) {
    const size_t begin = at + kUsers.size();
    const size_t end = lower.find_first_of("\\/:*?\"<>|\r\n", begin);
    if (end == std::string::npos || lower[end] != '\\') continue;
    const std::string_view name = text.substr(begin, end - begin);
    AddAccount(ansi ? Utf8OfAnsi(name) : std::string(name), names);
  }
}

// What stands behind the last backslash is the device's serial number, unless Windows has
// made it up.
void AddDeviceSerial(const std::string& instance_id, std::vector<FoundName>& names) {
  const size_t at = instance_id.rfind('\\');
  if (at == std::string::npos) return;
  const std::string last = instance_id.substr(at + 1);
  if (last.size() < kShortestSerial || last.find('&') != std::string::npos) return;
  names.push_back({.kind = NameKind::kSerialNumber, .text = last});
}

std::string ReadTextValue(platform::KeyHandle key, std::string_view name) {
  std::array<char, 1024> text{};
  auto size = static_cast<uint32_t>(text.size());
  if (platform::Os().registry->RegQueryValueExA(
          key, name, reinterpret_cast<std::byte*>(text.data()), size) != platform::kErrorSuccess) {
    return {};
  }
  return Utf8OfAnsi(FirstText(std::span(text).first(std::min<size_t>(size, text.size()))));
}

std::string TextBelow(std::u16string_view path, std::string_view name) {
  platform::KeyHandle key{};
  platform::Registry& registry = *platform::Os().registry;
  if (registry.RegOpenKeyExW(path, platform::kKeyRead, key) != platform::kErrorSuccess) return {};
  const ScopeExit close([&] { registry.RegCloseKey(key); });
  return ReadTextValue(key, name);
}

void AddProfileList(std::vector<FoundName>& names) {
  platform::Registry& registry = *platform::Os().registry;
  platform::KeyHandle list{};
  if (registry.RegOpenKeyExW(u"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\ProfileList",
                             platform::kKeyRead, list) != platform::kErrorSuccess) {
    return;
  }
  const ScopeExit close([&] { registry.RegCloseKey(list); });
  for (uint32_t index = 0;; ++index) {
    std::array<char, 256> subkey{};
    platform::KeyHandle key{};
    if (registry.RegEnumKeyExA(list, index, subkey) != platform::kErrorSuccess) return;
    if (registry.RegOpenKeyExA(list, FirstText(subkey), platform::kKeyRead, key) !=
        platform::kErrorSuccess) {
      continue;
    }
    const ScopeExit close_entry([&] { registry.RegCloseKey(key); });
    AddProfiles(ReadTextValue(key, "ProfileImagePath") + "\\", names, false);
  }
}

void AddComputer(const std::string& name, std::vector<FoundName>& names) {
  if (!name.empty()) names.push_back({.kind = NameKind::kComputer, .text = name});
}

std::string Plain8(std::u16string_view ascii) { return {ascii.begin(), ascii.end()}; }

}  // namespace

std::vector<FoundName> NamesOfTheSystem() {
  std::vector<FoundName> names;
  const auto variable = [](const char* name) {
    return Utf8OfAnsi(platform::Os().environment->GetVariable(name));
  };
  AddComputer(variable("COMPUTERNAME"), names);
  AddComputer(
      TextBelow(u"SYSTEM\\CurrentControlSet\\Control\\ComputerName\\ComputerName", "ComputerName"),
      names);
  AddComputer(TextBelow(u"SYSTEM\\CurrentControlSet\\Services\\Tcpip\\Parameters", "Hostname"),
              names);
  AddAccount(variable("USERNAME"), names);
  AddProfiles(variable("USERPROFILE") + "\\", names, false);
  AddProfileList(names);
  return names;
}

std::vector<FoundName> FindNames(const CapturedNotebook& notebook,
                                 std::vector<FoundName> of_the_system) {
  std::vector<FoundName> names;
  if (notebook.firmware) names = NamesInFirmware(*notebook.firmware);
  for (const CapturedAdapter& adapter : notebook.adapters) {
    if (adapter.instance_id) AddDeviceSerial(*adapter.instance_id, names);
  }
  for (const Bytes& record : notebook.records) AddComputer(ComputerOf(record), names);
  AddProfiles(notebook.program_path, names, false);
  AddProfiles(notebook.program_data, names, false);
  names.insert(names.end(), of_the_system.begin(), of_the_system.end());
  for (const CapturedLog& log : notebook.logs) {
    if (log.content) AddProfiles(*log.content, names, true);
  }
  return names;
}

std::vector<std::string> DecisiveTexts(const CapturedNotebook& notebook) {
  std::vector<std::string> texts{
      kExpectedMbimHwids,
      Plain8(kServiceName),
      std::string(kLogFilePrefix) + kLogProgram,
      "C:\\ProgramData\\Nuvelta Wireless Inc\\MAService\\HX2208GW",
      "C:\\Program Files\\Nuvelta Wireless\\hx2208_auth_service.exe",
      "SOFTWARE\\Nuvelta Wireless Inc\\Logs IsMAServiceLog SupportVerifyPlatform IsDisableVerify",
      "Wlclntfy",
      std::string(platform::kFccMarker.begin(), platform::kFccMarker.end())};
  for (const PlatformEntry& entry : platform_modem_map) {
    texts.emplace_back(entry.key);
    texts.insert(texts.end(), entry.hwids.begin(), entry.hwids.end());
  }
  if (notebook.firmware) {
    const std::vector<std::string> platform = PlatformTexts(*notebook.firmware);
    texts.insert(texts.end(), platform.begin(), platform.end());
  }
  for (const CapturedAdapter& adapter : notebook.adapters) {
    texts.push_back(adapter.name);
    if (adapter.instance_id) texts.emplace_back(CutMbimHwid(*adapter.instance_id));
  }
  for (const std::optional<Bytes>& device : notebook.devices) {
    if (device) texts.push_back(Utf8Of(WideFrom(*device)));
  }
  return texts;
}

void Rename(CapturedNotebook& notebook, const Renaming& renaming) {
  const auto rename = [&](std::string& text) { text = renaming.Rename(text); };
  if (notebook.firmware) renaming.Rename(*notebook.firmware);
  for (CapturedValue& value : notebook.registry) renaming.Rename(value.data);
  for (CapturedAdapter& adapter : notebook.adapters) {
    rename(adapter.name);
    rename(adapter.description);
    rename(adapter.friendly_name);
    if (adapter.instance_id) rename(*adapter.instance_id);
  }
  for (std::optional<Bytes>& device : notebook.devices) {
    if (device) renaming.Rename(*device);
  }
  for (Bytes& record : notebook.records) {
    ClearTexts(record);
    renaming.Rename(record);
  }
  for (CapturedSession& session : notebook.sessions) rename(session.name);
  for (CapturedService& service : notebook.services) rename(service.name);
  for (CapturedLog& log : notebook.logs) {
    rename(log.name);
    if (log.content) rename(*log.content);
  }
  rename(notebook.program_path);
  rename(notebook.program_data);
}

}  // namespace nuvelta::support
