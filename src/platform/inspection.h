// What a support engineer asks of the system and the service does not: how the service is
// installed and who may do what with its log folder. Reads only. Facts: winsvc.h,
// processthreadsapi.h and aclapi.h reference pages.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/service_control.h"
#include "platform/types.h"

namespace nuvelta::platform {

inline constexpr uint32_t kErrorServiceDoesNotExist = 1060;  // ERROR_SERVICE_DOES_NOT_EXIST

inline constexpr uint32_t kErrorServiceNeverStarted = 1077;  // since the system began

inline constexpr uint32_t kServiceAutoStart = 2;    // SERVICE_AUTO_START
inline constexpr uint32_t kServiceDemandStart = 3;  // SERVICE_DEMAND_START
inline constexpr uint32_t kServiceDisabled = 4;     // SERVICE_DISABLED

// The used members of SERVICE_STATUS_PROCESS.
struct ServiceProcess {
  uint32_t dwCurrentState = 0;
  uint32_t dwWin32ExitCode = 0;
  uint32_t dwServiceSpecificExitCode = 0;
  uint32_t dwProcessId = 0;
};

// The used members of QUERY_SERVICE_CONFIGW.
struct ServiceConfiguration {
  uint32_t dwStartType = 0;
  std::u16string lpBinaryPathName;
  std::u16string lpServiceStartName;
};

// As in SC_ACTION: 0 none, 1 restart the service, 2 reboot, 3 run a command; then
// milliseconds.
struct ServiceAction {
  uint32_t Type = 0;
  uint32_t Delay = 0;
};

// The used members of SERVICE_FAILURE_ACTIONSW.
struct ServiceFailureActions {
  uint32_t dwResetPeriod = 0;  // seconds
  std::vector<ServiceAction> actions;
};

// One entry of a list of access rights, the account by its name, or by its SID when it
// has none.
struct AccessEntry {
  bool allows = false;  // else it denies
  bool inherited = false;
  bool inherit_only = false;  // of what is below the folder alone
  uint32_t mask = 0;
  std::u16string account;
};

struct FolderSecurity {
  std::u16string owner;
  bool has_list = false;  // without one everybody may do everything
  std::vector<AccessEntry> entries;
};

class Inspection {
 public:
  virtual ~Inspection() = default;

  // Each answers a Win32 status code, 0 on success; what it asks for is set then only.

  virtual uint32_t QueryServiceStatusEx(std::u16string_view service, ServiceProcess& process) = 0;
  virtual uint32_t QueryServiceConfigW(std::u16string_view service,
                                       ServiceConfiguration& configuration) = 0;
  // QueryServiceConfig2W at SERVICE_CONFIG_FAILURE_ACTIONS.
  virtual uint32_t QueryServiceConfig2W(std::u16string_view service,
                                        ServiceFailureActions& actions) = 0;
  // When a process was created.
  virtual uint32_t GetProcessTimes(uint32_t process, FileTime& creation) = 0;
  // Owner and access rights of a file or folder; the path in the ANSI code page.
  virtual uint32_t GetNamedSecurityInfoA(const std::string& path, FolderSecurity& security) = 0;
  // GetFileSizeEx: the size now, where the folder's entry of a file that a process keeps open
  // has the size of when it was opened. The path in the ANSI code page.
  virtual uint32_t GetFileSizeEx(const std::string& path, uint64_t& size) = 0;
};

}  // namespace nuvelta::platform
