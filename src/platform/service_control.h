// The service control manager, its notifications and the elevated launch.
// Facts: winsvc.h, winuser.h, powrprof.h, dbt.h, shellapi.h reference pages.
#pragma once

#include <cstdint>
#include <string_view>

#include "platform/types.h"

namespace nuvelta::platform {

inline constexpr uint32_t kServiceWin32OwnProcess = 0x10;  // SERVICE_WIN32_OWN_PROCESS
inline constexpr uint32_t kServiceWin32 = 0x30;            // SERVICE_WIN32
inline constexpr uint32_t kServiceStateAll = 3;            // SERVICE_STATE_ALL
inline constexpr uint32_t kScEnumProcessInfo = 0;          // SC_ENUM_PROCESS_INFO
inline constexpr uint32_t kScManagerAllAccess = 0xF003F;   // SC_MANAGER_ALL_ACCESS

inline constexpr uint32_t kServiceStopped = 1;          // SERVICE_STOPPED
inline constexpr uint32_t kServiceStartPending = 2;     // SERVICE_START_PENDING
inline constexpr uint32_t kServiceStopPending = 3;      // SERVICE_STOP_PENDING
inline constexpr uint32_t kServiceRunning = 4;          // SERVICE_RUNNING
inline constexpr uint32_t kServiceContinuePending = 5;  // SERVICE_CONTINUE_PENDING
inline constexpr uint32_t kServicePausePending = 6;     // SERVICE_PAUSE_PENDING

inline constexpr uint32_t kServiceAcceptStop = 0x01;           // SERVICE_ACCEPT_STOP
inline constexpr uint32_t kServiceAcceptSessionChange = 0x80;  // SERVICE_ACCEPT_SESSIONCHANGE

inline constexpr uint32_t kServiceControlStop = 1;            // SERVICE_CONTROL_STOP
inline constexpr uint32_t kServiceControlPause = 2;           // SERVICE_CONTROL_PAUSE
inline constexpr uint32_t kServiceControlContinue = 3;        // SERVICE_CONTROL_CONTINUE
inline constexpr uint32_t kServiceControlShutdown = 5;        // SERVICE_CONTROL_SHUTDOWN
inline constexpr uint32_t kServiceControlDeviceEvent = 11;    // SERVICE_CONTROL_DEVICEEVENT
inline constexpr uint32_t kServiceControlPowerEvent = 13;     // SERVICE_CONTROL_POWEREVENT
inline constexpr uint32_t kServiceControlSessionChange = 14;  // SERVICE_CONTROL_SESSIONCHANGE

inline constexpr uint32_t kDeviceNotifyServiceHandle = 1;  // DEVICE_NOTIFY_SERVICE_HANDLE
inline constexpr uint32_t kDeviceNotifyCallback = 2;       // DEVICE_NOTIFY_CALLBACK

inline constexpr uint32_t kDbtDeviceArrival = 0x8000;         // DBT_DEVICEARRIVAL
inline constexpr uint32_t kDbtDeviceRemoveComplete = 0x8004;  // DBT_DEVICEREMOVECOMPLETE
inline constexpr uint32_t kDbtDevTypDeviceInterface = 5;      // DBT_DEVTYP_DEVICEINTERFACE

inline constexpr uint32_t kPbtApmSuspend = 4;           // PBT_APMSUSPEND
inline constexpr uint32_t kPbtApmResumeSuspend = 7;     // PBT_APMRESUMESUSPEND
inline constexpr uint32_t kPbtApmResumeAutomatic = 18;  // PBT_APMRESUMEAUTOMATIC

inline constexpr uint32_t kSeeMaskNoCloseProcess = 0x40;  // SEE_MASK_NOCLOSEPROCESS
inline constexpr int32_t kSwHide = 0;                     // SW_HIDE

// {CAC88484-7515-4C03-82E6-71A87ABAC361}, GUID_DEVINTERFACE_NET
inline constexpr Guid kGuidDevInterfaceNet{
    0xCAC88484, 0x7515, 0x4C03, {0x82, 0xE6, 0x71, 0xA8, 0x7A, 0xBA, 0xC3, 0x61}};
// {A7AD8041-B45A-4CAE-87A3-EECBB468A9E1}, GUID_BATTERY_PERCENTAGE_REMAINING
inline constexpr Guid kGuidBatteryPercentageRemaining{
    0xA7AD8041, 0xB45A, 0x4CAE, {0x87, 0xA3, 0xEE, 0xCB, 0xB4, 0x68, 0xA9, 0xE1}};

// As in SERVICE_STATUS.
struct ServiceStatus {
  uint32_t dwServiceType = 0;
  uint32_t dwCurrentState = 0;
  uint32_t dwControlsAccepted = 0;
  uint32_t dwWin32ExitCode = 0;
  uint32_t dwServiceSpecificExitCode = 0;
  uint32_t dwCheckPoint = 0;
  uint32_t dwWaitHint = 0;
};

// As in DEV_BROADCAST_DEVICEINTERFACE_W: the name, NUL-terminated UTF-16, lies
// at offset 28 of an event and reaches at most to dbcc_size.
struct DeviceInterfaceBroadcast {
  uint32_t dbcc_size = 32;
  uint32_t dbcc_devicetype = 0;
  uint32_t dbcc_reserved = 0;
  Guid dbcc_classguid;
  std::array<char16_t, 2> dbcc_name{};
};
static_assert(sizeof(DeviceInterfaceBroadcast) == 32);

// As in POWERBROADCAST_SETTING, with room for one 32-bit word of data.
struct PowerBroadcastSetting {
  Guid PowerSetting;
  uint32_t DataLength = 0;
  std::array<uint8_t, 4> Data{};
};
static_assert(sizeof(PowerBroadcastSetting) == 24);

// One record of EnumServicesStatusExW's buffer; the name lives in the buffer.
struct ServiceRecord {
  const char16_t* lpServiceName = nullptr;
  uint32_t dwProcessId = 0;
};

// The used members of SHELLEXECUTEINFOW; no window and no directory. The texts
// are NUL-terminated.
struct ShellExecuteInfo {
  uint32_t cbSize = 112;
  uint32_t fMask = 0;
  std::u16string_view lpVerb;
  std::u16string_view lpFile;
  std::u16string_view lpParameters;
  int32_t nShow = 0;
};

using ServiceMainFunction = void (*)();
using HandlerFunction = uint32_t (*)(uint32_t control, uint32_t event_type, const void* event_data,
                                     void* context);
using PowerCallback = uint32_t (*)(void* context, uint32_t type, const void* setting);

class ServiceControl {
 public:
  virtual ~ServiceControl() = default;

  // Connects the calling thread to the service control manager with a table of
  // one service; returns true once that service has stopped.
  virtual bool StartServiceCtrlDispatcherW(std::u16string_view name, ServiceMainFunction main) = 0;
  // The handler runs on the dispatcher's thread. Null on failure.
  virtual StatusHandle RegisterServiceCtrlHandlerExW(std::u16string_view name,
                                                     HandlerFunction handler, void* context) = 0;
  virtual bool SetServiceStatus(StatusHandle handle, const ServiceStatus& status) = 0;

  // Events of the setting reach the control handler. Null on failure.
  virtual NotifyHandle RegisterPowerSettingNotification(StatusHandle recipient, const Guid& setting,
                                                        uint32_t flags) = 0;
  // The callback runs on a thread of the system, one event after the other.
  virtual NotifyHandle RegisterSuspendResumeNotification(PowerCallback callback, void* context,
                                                         uint32_t flags) = 0;
  virtual NotifyHandle RegisterDeviceNotificationW(StatusHandle recipient,
                                                   const DeviceInterfaceBroadcast& filter,
                                                   uint32_t flags) = 0;

  // The manager of the local machine, active database; null on failure.
  virtual ManagerHandle OpenSCManagerW(uint32_t access) = 0;
  // Fills `buffer` with the services' records of every group; false with kErrorMoreData and the
  // missing byte count in `needed` when it is too small.
  virtual bool EnumServicesStatusExW(ManagerHandle manager, uint32_t level, uint32_t type,
                                     uint32_t state, void* buffer, uint32_t size, uint32_t& needed,
                                     uint32_t& returned) = 0;
  // Reads record `index` of a filled buffer.
  virtual ServiceRecord ReadService(const void* buffer, uint32_t index) = 0;
  virtual bool CloseServiceHandle(ManagerHandle manager) noexcept = 0;

  virtual bool ShellExecuteExW(const ShellExecuteInfo& info) = 0;
};

}  // namespace nuvelta::platform
