#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <string_view>

#include "auth/firmware_table.h"
#include "common/common_util.h"
#include "common/scope_exit.h"
#include "common/service_name.h"
#include "common/text_util.h"
#include "platform/clock.h"
#include "platform/environment.h"
#include "platform/inspection.h"
#include "platform/platform.h"
#include "platform/registry.h"
#include "platform/service_control.h"
#include "platform/sessions.h"
#include "platform/system_info.h"
#include "platform/threads.h"
#include "support/capture/read_notebook.h"
#include "support/inspections.h"
#include "support/wide_text.h"

namespace nuvelta::support {

namespace {

constexpr int64_t kTicksASecond = 10'000'000;
constexpr int64_t kTicksUpTo1970 = 11'644'473'600 * kTicksASecond;
// To connect and to list alone: SC_MANAGER_CONNECT, SC_MANAGER_ENUMERATE_SERVICE.
constexpr uint32_t kManagerList = 0x0005;
constexpr uint32_t kMostServices = 10'000;

uint32_t Error() { return platform::Os().threads->GetLastError(); }

// What the clock shows where it is local, less what it shows in UTC.
int32_t EastOfUtc(int64_t seconds) {
  using namespace std::chrono;
  const std::tm local = platform::Os().clock->localtime(seconds);
  const sys_days day = year(local.tm_year + 1900) / (local.tm_mon + 1) / local.tm_mday;
  const auto shown = duration_cast<std::chrono::seconds>(day.time_since_epoch()).count() +
                     local.tm_hour * 3600L + local.tm_min * 60L + local.tm_sec;
  return static_cast<int32_t>(shown - seconds);
}

void ReadBoot(CapturedNotebook& notebook, int64_t now) {
  platform::SystemInformation& system = *platform::Os().system_information;
  alignas(int64_t) std::array<std::byte, 32> information{};
  if (!system.LookUpNtQuerySystemInformation() ||
      system.NtQuerySystemInformation(platform::kSystemTimeOfDayInformation, information) != 0) {
    notebook.not_seen.emplace_back("when the notebook was booted");
    return;
  }
  int64_t boot = 0;
  std::memcpy(&boot, information.data(), sizeof boot);
  const int64_t ticks = now * kTicksASecond + kTicksUpTo1970 - boot;
  notebook.uptime = static_cast<double>(std::max<int64_t>(ticks, 0)) / kTicksASecond;
  notebook.uptime_seen = true;
}

void ReadFirmwareTable(CapturedNotebook& notebook) {
  const FirmwareTable firmware;
  if (!firmware.HasBuffer() || firmware.Written() != firmware.Size()) {
    NoteError(notebook, "the firmware's table", Error());
    return;
  }
  notebook.firmware.emplace();
  for (const std::byte byte : firmware.Bytes()) {
    notebook.firmware->push_back(std::to_integer<uint8_t>(byte));
  }
}

void ReadSwitches(CapturedNotebook& notebook) {
  for (const SwitchFacts& facts : InspectSwitches()) {
    if (facts.error == platform::kErrorSuccess) {
      notebook.registry.push_back({facts.key, facts.name, facts.type, facts.data});
    } else if (facts.error != platform::kErrorFileNotFound) {
      NoteError(notebook, "the registry value " + facts.name, facts.error);
    }
  }
}

void ReadSessions(CapturedNotebook& notebook) {
  const platform::SessionInfo* list = nullptr;
  uint32_t count = 0;
  if (!platform::Os().sessions->WTSEnumerateSessionsW(list, count)) {
    NoteError(notebook, "the sessions", Error());
    return;
  }
  for (uint32_t i = 0; i < count; ++i) {
    const char16_t* const name = list[i].pWinStationName;
    notebook.sessions.push_back(
        {list[i].SessionId, name == nullptr ? std::string() : Utf8Of(name), list[i].State});
  }
}

void ReadServices(CapturedNotebook& notebook) {
  platform::ServiceControl& control = *platform::Os().service_control;
  const platform::ManagerHandle manager = control.OpenSCManagerW(kManagerList);
  if (manager == platform::ManagerHandle{}) {
    NoteError(notebook, "the list of services", Error());
    return;
  }
  const ScopeExit close([&] { control.CloseServiceHandle(manager); });
  std::vector<std::byte> buffer;
  uint32_t needed = 0;
  uint32_t count = 0;
  // The list may grow between two calls.
  for (int attempt = 0; attempt < 5; ++attempt) {
    void* const at = buffer.empty() ? nullptr : buffer.data();
    if (control.EnumServicesStatusExW(manager, platform::kScEnumProcessInfo,
                                      platform::kServiceWin32, platform::kServiceStateAll, at,
                                      static_cast<uint32_t>(buffer.size()), needed, count)) {
      break;
    }
    count = 0;
    const uint32_t error = Error();
    if (error != platform::kErrorMoreData || attempt == 4) {
      NoteError(notebook, "the list of services", error);
      return;
    }
    buffer.resize(buffer.size() + needed);
  }
  for (uint32_t i = 0; i < std::min(count, kMostServices); ++i) {
    const platform::ServiceRecord record = control.ReadService(buffer.data(), i);
    if (record.lpServiceName == nullptr) continue;
    const std::u16string_view name = record.lpServiceName;
    // Of this service it would be the process of the captured run.
    notebook.services.push_back({Utf8Of(name), name == kServiceName ? 0 : record.dwProcessId});
  }
}

void ReadVersion(CapturedNotebook& notebook, const std::u16string& path) {
  platform::SystemInformation& system = *platform::Os().system_information;
  const uint32_t size = system.GetFileVersionInfoSizeW(path.c_str());
  std::vector<std::byte> block((size_t{size} + 1) * 2);
  platform::FixedFileInfo info;
  if (size == 0 || !system.GetFileVersionInfoW(path.c_str(), std::span(block).first(size)) ||
      !system.VerQueryValueW(std::span(block).first(size), info)) {
    return;
  }
  std::array<char, 40> text{};
  std::snprintf(text.data(), text.size(), "%u.%u.%u.%u",
                static_cast<unsigned>(info.dwFileVersionMS >> 16U),
                static_cast<unsigned>(info.dwFileVersionMS & 0xFFFFU),
                static_cast<unsigned>(info.dwFileVersionLS >> 16U),
                static_cast<unsigned>(info.dwFileVersionLS & 0xFFFFU));
  notebook.program_version = text.data();
}

// The program of a command line.
std::u16string ProgramOf(std::u16string_view line) {
  if (line.starts_with(u'"')) return std::u16string(line.substr(1, line.find(u'"', 1) - 1));
  return std::u16string(line);
}

void ReadProgram(CapturedNotebook& notebook) {
  platform::Inspection* const inspection = platform::Os().inspection;
  platform::ServiceConfiguration configuration;
  const uint32_t error = inspection == nullptr
                             ? platform::kErrorServiceDoesNotExist
                             : inspection->QueryServiceConfigW(kServiceName, configuration);
  if (error != platform::kErrorSuccess) {
    NoteError(notebook, "how the service is installed", error);
    return;
  }
  const std::u16string path = ProgramOf(configuration.lpBinaryPathName);
  notebook.program_path = Utf8Of(path);
  ReadVersion(notebook, path);
}

}  // namespace

void NoteError(CapturedNotebook& notebook, const std::string& what, uint32_t error) {
  const std::string text = what + ": error " + std::to_string(error);
  if (std::ranges::find(notebook.not_seen, text) == notebook.not_seen.end()) {
    notebook.not_seen.push_back(text);
  }
}

void ReadSystem(CapturedNotebook& notebook) {
  ReadFirmwareTable(notebook);
  ReadSwitches(notebook);
  ReadSessions(notebook);
  ReadServices(notebook);
  ReadProgram(notebook);
  notebook.program_data = Utf8OfAnsi(platform::Os().environment->GetVariable("programdata"));
}

CapturedNotebook ReadNotebookForCapture(bool query) {
  CapturedNotebook notebook;
  const int64_t now = platform::Os().clock->time();
  notebook.time = LocalTime(now);
  notebook.east_of_utc = EastOfUtc(now);
  ReadBoot(notebook, now);
  ReadLogs(notebook, now);
  ReadSystem(notebook);
  ReadRecords(notebook);
  ReadHardware(notebook);
  ReadModem(notebook, query);
  return notebook;
}

}  // namespace nuvelta::support
