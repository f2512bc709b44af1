#include "service/service_main.h"

#include <memory>

#include "common/func_trace.h"
#include "common/logger.h"
#include "common/service_name.h"
#include "platform/environment.h"
#include "platform/platform.h"
#include "platform/service_control.h"
#include "platform/threads.h"
#include "service/control_handler.h"
#include "service/diagnostics.h"
#include "service/nservice.h"
#include "service/resume.h"
#include "service/service_state.h"
#include "service/service_status.h"

namespace nuvelta {

namespace {

constexpr const char* kMain = "wmain";
constexpr const char* kServiceMain = "ServiceMain";
constexpr uint32_t kStartWaitHint = 1000;  // milliseconds

void RegisterUsbDeviceNotification() {
  constexpr const char* kName = "RegisterUsbDeviceNotification";
  const CFuncTrace trace(kName);
  platform::DeviceInterfaceBroadcast filter;
  filter.dbcc_devicetype = platform::kDbtDevTypDeviceInterface;
  filter.dbcc_classguid = platform::kGuidDevInterfaceNet;
  if (platform::Os().service_control->RegisterDeviceNotificationW(
          g_hServiceStatus, filter, platform::kDeviceNotifyServiceHandle) ==
      platform::NotifyHandle{}) {
    const uint32_t error = platform::Os().threads->GetLastError();
    LogError(kName, "RegisterDeviceNotification error 0x%08x", error);
  }
}

void RegisterNotifications() {
  platform::ServiceControl& control = *platform::Os().service_control;
  // Unchecked: the battery level is only logged.
  control.RegisterPowerSettingNotification(g_hServiceStatus,
                                           platform::kGuidBatteryPercentageRemaining,
                                           platform::kDeviceNotifyServiceHandle);
  g_hSuspendResumeNotify = control.RegisterSuspendResumeNotification(
      PowerChanged, nullptr, platform::kDeviceNotifyCallback);
  if (g_hSuspendResumeNotify.load() == platform::NotifyHandle{}) {
    LogError(kServiceMain, "RegisterSuspendResumeNotification returned error");
  }
  RegisterUsbDeviceNotification();
}

// From the creation of the service object to its end.
void RunService() {
  platform::Threads& threads = *platform::Os().threads;
  g_hServiceStopEvent = threads.CreateEventW(true, false);
  if (g_hServiceStopEvent.load() == platform::EventHandle{}) {
    LogError(kServiceMain, "CreateEvent returned error");
    return;
  }
  auto service = std::make_unique<NService>(g_hServiceStopEvent);
  g_pNService = service.get();
  ReportServiceStatus(platform::kServiceRunning, 0, 0);
  service->Run();
  service.reset();
  g_pNService = nullptr;
  LogInfo(kServiceMain,
          "\r\n==================================   NService exit "
          "==============================================\r\n");
  threads.CloseHandle(g_hServiceStopEvent);
  g_hServiceStopEvent = platform::EventHandle{};
}

}  // namespace

int ServiceProcessMain() {
  platform::Os().environment->InstallCrashDumpWriter();
  CLogger::GetInstance().InitLogger();
  LogInfo(kMain,
          "\r\n==================================   NService start "
          "==============================================\r\n");
  LogInfo(kMain, "N auth Service: Main: Entry");
  LogInfo(kMain, "build at %s  %s", __DATE__, __TIME__);
  if (platform::Os().service_control->StartServiceCtrlDispatcherW(kServiceName, ServiceMain)) {
    // [fixed] "Monitor", unlike the entry line.
    LogInfo(kMain, "N auth Monitor Service: Main: Exit");
    return 0;
  }
  const auto error = static_cast<int>(platform::Os().threads->GetLastError());
  LogInfo(kMain, "N auth Service: Main: StartServiceCtrlDispatcher returned error : %d", error);
  return error;
}

void ServiceMain() {
  const CFuncTrace trace(kServiceMain);
  LogBootTime();
  LogFileVersion();
  LogSessions();
  g_hServiceStatus = platform::Os().service_control->RegisterServiceCtrlHandlerExW(
      kServiceName, ServiceCtrlHandler, nullptr);
  if (g_hServiceStatus.load() == platform::StatusHandle{}) {
    LogError(kServiceMain, "RegisterServiceCtrlHandler returned error");
    return;
  }
  RegisterNotifications();
  InitServiceStatus();
  ReportServiceStatus(platform::kServiceStartPending, 0, kStartWaitHint);
  RunService();
  ReportServiceStatus(platform::kServiceStopped, 0, 0);
}

}  // namespace nuvelta
