#include "notebook/machine/virtual_inspection.h"

#include <filesystem>

#include "notebook/model/file_time.h"
#include "notebook/model/unicode.h"

namespace nuvelta::virtual_notebook {

namespace {

constexpr uint32_t kRestart = 1;             // SC_ACTION_RESTART
constexpr uint32_t kRestartDelay = 60'000;   // milliseconds
constexpr uint32_t kResetPeriod = 86'400;    // seconds
constexpr uint32_t kFullControl = 0x1F01FF;  // FILE_ALL_ACCESS
constexpr uint32_t kReadAndExecute = 0x1200A9;
constexpr uint32_t kInvalidParameter = 87;  // ERROR_INVALID_PARAMETER

}  // namespace

bool VirtualInspection::IsInstalled(std::u16string_view service) const {
  return Folded(Utf8(service)) == Folded(m_service_key);
}

uint32_t VirtualInspection::QueryServiceStatusEx(std::u16string_view service,
                                                 platform::ServiceProcess& process) {
  if (!IsInstalled(service)) return platform::kErrorServiceDoesNotExist;
  if (m_service.process == 0 && m_service.status.dwCurrentState == 0) {
    process = {.dwCurrentState = platform::kServiceStopped,
               .dwWin32ExitCode = platform::kErrorServiceNeverStarted};
    return platform::kErrorSuccess;
  }
  process = {.dwCurrentState = m_service.process == 0 ? platform::kServiceStopped
                                                      : m_service.status.dwCurrentState,
             .dwWin32ExitCode = m_service.status.dwWin32ExitCode,
             .dwServiceSpecificExitCode = m_service.status.dwServiceSpecificExitCode,
             .dwProcessId = m_service.process};
  return platform::kErrorSuccess;
}

uint32_t VirtualInspection::QueryServiceConfigW(std::u16string_view service,
                                                platform::ServiceConfiguration& configuration) {
  if (!IsInstalled(service)) return platform::kErrorServiceDoesNotExist;
  configuration = {.dwStartType = platform::kServiceAutoStart,
                   .lpBinaryPathName = Utf16("\"" + m_program + "\""),
                   .lpServiceStartName = u"LocalSystem"};
  return platform::kErrorSuccess;
}

uint32_t VirtualInspection::QueryServiceConfig2W(std::u16string_view service,
                                                 platform::ServiceFailureActions& actions) {
  if (!IsInstalled(service)) return platform::kErrorServiceDoesNotExist;
  actions = {.dwResetPeriod = kResetPeriod,
             .actions = {{.Type = kRestart, .Delay = kRestartDelay},
                         {.Type = kRestart, .Delay = kRestartDelay},
                         {}}};
  return platform::kErrorSuccess;
}

uint32_t VirtualInspection::GetProcessTimes(uint32_t process, platform::FileTime& creation) {
  if (process == 0 || process != m_service.process) return kInvalidParameter;
  creation = FileTicks(m_service.since);
  return platform::kErrorSuccess;
}

// As a folder below ProgramData that a service made.
uint32_t VirtualInspection::GetNamedSecurityInfoA(const std::string& path,
                                                  platform::FolderSecurity& security) {
  if (!std::filesystem::exists(m_files.HostPath(path))) return platform::kErrorFileNotFound;
  security = {.owner = u"NT AUTHORITY\\SYSTEM", .has_list = true, .entries = {}};
  const auto allow = [&](const char16_t* account, uint32_t mask) {
    security.entries.push_back({.allows = true,
                                .inherited = true,
                                .inherit_only = false,
                                .mask = mask,
                                .account = account});
  };
  allow(u"NT AUTHORITY\\SYSTEM", kFullControl);
  allow(u"BUILTIN\\Administrators", kFullControl);
  allow(u"BUILTIN\\Users", kReadAndExecute);
  return platform::kErrorSuccess;
}

uint32_t VirtualInspection::GetFileSizeEx(const std::string& path, uint64_t& size) {
  std::error_code error;
  const uintmax_t bytes = std::filesystem::file_size(m_files.HostPath(path), error);
  if (error) return platform::kErrorFileNotFound;
  size = bytes;
  return platform::kErrorSuccess;
}

}  // namespace nuvelta::virtual_notebook
