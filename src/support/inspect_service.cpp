#include <algorithm>
#include <array>
#include <cstdio>
#include <ctime>
#include <optional>
#include <string_view>
#include <utility>

#include "common/common_util.h"
#include "common/log_folder.h"
#include "common/scope_exit.h"
#include "common/service_name.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/inspection.h"
#include "platform/platform.h"
#include "platform/registry.h"
#include "support/inspections.h"
#include "support/log_files.h"
#include "support/wide_text.h"

namespace nuvelta::support {

namespace {

constexpr uint32_t kNoInspection = 50;  // ERROR_NOT_SUPPORTED
constexpr int64_t kTicksPerSecond = 10'000'000;
constexpr int64_t kSecondsBefore1970 = 11'644'473'600;

struct SwitchName {
  std::u16string_view key, name;
};
constexpr std::array kSwitches{
    SwitchName{u"SOFTWARE\\Nuvelta Wireless Inc\\Logs", u"IsMAServiceLog"},
    SwitchName{u"SOFTWARE\\Nuvelta Wireless Inc\\MAService", u"SupportVerifyPlatform"},
    SwitchName{u"SOFTWARE\\Nuvelta Wireless Inc\\MAService", u"IsDisableVerify"},
};

std::string Plain(std::u16string_view ascii) { return {ascii.begin(), ascii.end()}; }

uint32_t ReadStored(const SwitchName& name, SwitchFacts& facts) {
  platform::Registry& registry = *platform::Os().registry;
  platform::KeyHandle key{};
  uint32_t error = registry.RegOpenKeyExW(name.key, platform::kKeyRead, key);
  if (error != platform::kErrorSuccess) return error;
  const ScopeExit close([&] { registry.RegCloseKey(key); });
  uint32_t size = 0;
  error = registry.RegQueryValueExW(key, name.name, facts.type, nullptr, size);
  if (error != platform::kErrorSuccess) return error;
  facts.data.resize(size);
  error = registry.RegQueryValueExW(key, name.name, facts.type,
                                    reinterpret_cast<std::byte*>(facts.data.data()), size);
  facts.data.resize(error == platform::kErrorSuccess ? std::min<size_t>(size, facts.data.size())
                                                     : 0);
  return error;
}

// Of the log that was begun last the part that is written now.
void FindNewestLog(LogFolderFacts& facts) {
  platform::Files& files = *platform::Os().files;
  platform::FindData data;
  const platform::FindHandle find = files.FindFirstFileA(
      facts.path + "\\" + kLogFilePrefix + kLogProgram + "*" + kLogFileSuffix, data);
  if (find == platform::InvalidHandle<platform::FindHandle>()) return;
  const ScopeExit close([&] { files.FindClose(find); });
  std::optional<LogName> newest;
  do {
    const std::optional<LogName> name = ParseLogName(data.cFileName);
    if (!name) continue;
    ++facts.logs;
    if (newest &&
        std::pair(name->stamp, -name->rotation) < std::pair(newest->stamp, -newest->rotation)) {
      continue;
    }
    newest = name;
    facts.newest = data.cFileName;
  } while (files.FindNextFileA(find, data));
}

}  // namespace

std::string LocalTime(int64_t seconds) {
  const std::tm local = platform::Os().clock->localtime(seconds);
  std::array<char, 40> text{};
  std::snprintf(text.data(), text.size(), "%04d-%02d-%02d %02d:%02d:%02d", local.tm_year + 1900,
                local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec);
  return text.data();
}

std::string LocalTime(platform::FileTime time) {
  return LocalTime(static_cast<int64_t>(time) / kTicksPerSecond - kSecondsBefore1970);
}

ServiceFacts InspectService() {
  ServiceFacts facts{.name = Plain(kServiceName),
                     .error = kNoInspection,
                     .configuration_error = kNoInspection,
                     .recovery_error = kNoInspection};
  platform::Inspection* const inspection = platform::Os().inspection;
  if (inspection == nullptr) return facts;
  facts.error = inspection->QueryServiceStatusEx(kServiceName, facts.process);
  facts.installed = facts.error == platform::kErrorSuccess;
  if (facts.error == platform::kErrorServiceDoesNotExist) {
    facts.configuration_error = facts.recovery_error = facts.error;
    return facts;
  }
  if (facts.process.dwProcessId != 0) {
    platform::FileTime creation = 0;
    facts.since_error = inspection->GetProcessTimes(facts.process.dwProcessId, creation);
    if (facts.since_error == platform::kErrorSuccess) facts.since = LocalTime(creation);
  }
  facts.configuration_error = inspection->QueryServiceConfigW(kServiceName, facts.configuration);
  facts.image = Utf8Of(facts.configuration.lpBinaryPathName);
  facts.account = Utf8Of(facts.configuration.lpServiceStartName);
  facts.recovery_error = inspection->QueryServiceConfig2W(kServiceName, facts.recovery);
  return facts;
}

LogFolderFacts InspectLogFolder() {
  LogFolderFacts facts{.path = BuildLogFolderPath(), .error = kNoInspection};
  platform::Inspection* const inspection = platform::Os().inspection;
  if (inspection != nullptr) {
    platform::FolderSecurity security;
    facts.error = inspection->GetNamedSecurityInfoA(facts.path, security);
    facts.owner = Utf8Of(security.owner);
    facts.has_list = security.has_list;
    for (const platform::AccessEntry& entry : security.entries) {
      facts.entries.push_back({.allows = entry.allows,
                               .inherited = entry.inherited,
                               .inherit_only = entry.inherit_only,
                               .mask = entry.mask,
                               .account = Utf8Of(entry.account)});
    }
  }
  FindNewestLog(facts);
  if (inspection != nullptr && !facts.newest.empty()) {
    facts.newest_error =
        inspection->GetFileSizeEx(facts.path + "\\" + facts.newest, facts.newest_size);
  }
  return facts;
}

std::vector<SwitchFacts> InspectSwitches() {
  std::vector<SwitchFacts> all;
  for (const SwitchName& name : kSwitches) {
    SwitchFacts facts{.key = Plain(name.key), .name = Plain(name.name)};
    facts.error = ReadStored(name, facts);
    facts.read = CommonUtil::ReadDWORDRegValue(0, name.key, name.name);
    all.push_back(std::move(facts));
  }
  return all;
}

}  // namespace nuvelta::support
