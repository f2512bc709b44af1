#include "service/control_handler.h"

#include <array>
#include <cstddef>
#include <cstring>
#include <string>

#include "common/func_trace.h"
#include "common/logger.h"
#include "common/text_util.h"
#include "platform/platform.h"
#include "platform/service_control.h"
#include "platform/threads.h"
#include "service/nservice.h"
#include "service/service_state.h"
#include "service/service_status.h"

namespace nuvelta {

namespace {

constexpr const char* kHandler = "ServiceCtrlHandler";

// Indexed by the event type, 1 to 10 (WTS_*). Each text ends with a blank.
constexpr std::array<const char*, 11> kSessionChanges{
    nullptr,
    "SERVICE_CONTROL_SESSIONCHANGE :: WTS_CONSOLE_CONNECT ",
    "SERVICE_CONTROL_SESSIONCHANGE :: WTS_CONSOLE_DISCONNECT ",
    "SERVICE_CONTROL_SESSIONCHANGE :: WTS_REMOTE_CONNECT ",
    "SERVICE_CONTROL_SESSIONCHANGE :: WTS_REMOTE_DISCONNECT ",
    "SERVICE_CONTROL_SESSIONCHANGE :: WTS_SESSION_LOGON ",
    "SERVICE_CONTROL_SESSIONCHANGE :: WTS_SESSION_LOGOFF ",
    "SERVICE_CONTROL_SESSIONCHANGE :: WTS_SESSION_LOCK ",
    "SERVICE_CONTROL_SESSIONCHANGE :: WTS_SESSION_UNLOCK ",
    "SERVICE_CONTROL_SESSIONCHANGE :: WTS_SESSION_REMOTE_CONTROL ",
    "SERVICE_CONTROL_SESSIONCHANGE :: WTS_SESSION_CREATE ",
};

// The handler goes on after the event is signalled: the service-main thread may
// be tearing down, or have reported stopped, while the worker is told to exit.
void OnStop() {
  ReportServiceStatus(platform::kServiceStopPending, 0, 0);
  LogInfo(kHandler, "SERVICE_CONTROL_STOP");
  platform::Os().threads->SetEvent(g_hServiceStopEvent);
  NService::stop();
  LogInfo(kHandler, "SERVICE_CONTROL_STOP g_pNService->stop(); exit");
}

// The interface's name, at most to the end that the event's size gives.
std::string InterfaceName(const void* eventData, uint32_t size) {
  constexpr uint32_t kNameOffset = offsetof(platform::DeviceInterfaceBroadcast, dbcc_name);
  std::u16string name;
  for (uint32_t at = kNameOffset; at + sizeof(char16_t) <= size; at += sizeof(char16_t)) {
    char16_t unit = 0;
    std::memcpy(&unit, static_cast<const char*>(eventData) + at, sizeof unit);
    if (unit == u'\0') break;
    name += unit;
  }
  return ToAnsi(name);
}

void OnDeviceEvent(uint32_t eventType, const void* eventData) {
  const bool arrival = eventType == platform::kDbtDeviceArrival;
  if (eventData == nullptr || (!arrival && eventType != platform::kDbtDeviceRemoveComplete)) return;
  std::array<uint32_t, 3> header{};  // dbch_size, dbch_devicetype, dbch_reserved
  std::memcpy(header.data(), eventData, sizeof header);
  if (header[1] != platform::kDbtDevTypDeviceInterface) return;
  LogInfo(kHandler, arrival ? "Device Arrival. (%s)" : "Device Removal. (%s)",
          InterfaceName(eventData, header[0]).c_str());
  // Any network adapter: the job finds out whether it is the modem.
  if (arrival && g_pNService != nullptr) NService::dealDeviceArrive();
}

// The level is only logged; [fixed] the event type is not examined.
void OnPowerEvent(const void* eventData) {
  LogInfo(kHandler, "SERVICE_CONTROL_POWEREVENT");
  if (eventData == nullptr) return;
  platform::PowerBroadcastSetting setting;
  constexpr size_t kHeaderSize = offsetof(platform::PowerBroadcastSetting, Data);
  std::memcpy(static_cast<void*>(&setting), eventData, kHeaderSize);
  if (setting.PowerSetting == platform::kGuidBatteryPercentageRemaining) {
    uint32_t tmp = 0;
    if (setting.DataLength >= sizeof tmp) {
      std::memcpy(&tmp, static_cast<const char*>(eventData) + kHeaderSize, sizeof tmp);
    }
    LogInfo(kHandler, "pPowerBroadcastSetting->PowerSetting =GUID_BATTERY_PERCENTAGE_REMAINING");
    LogInfo(kHandler, "ULONG32  tmp = %u%%", tmp);
  } else {
    LogInfo(kHandler, "pPowerBroadcastSetting->PowerSetting != GUID_BATTERY_PERCENTAGE_REMAINING");
    // [fixed] "%ul": the "l" is text.
    LogInfo(kHandler, "pPowerBroadcastSetting->PowerSetting =  %ul -", setting.PowerSetting.Data1);
  }
}

}  // namespace

uint32_t ServiceCtrlHandler(uint32_t control, uint32_t eventType, const void* eventData,
                            void* /*context*/) {
  const CFuncTrace trace(kHandler);
  LogInfo(kHandler, "CtrlCode = 0x%x ; dwEventType = %d", control, static_cast<int>(eventType));
  // Shutdown, pause and continue are not accepted, so they never come; their
  // branches stay as defaults.
  switch (control) {
    case platform::kServiceControlStop:
    case platform::kServiceControlShutdown:
      OnStop();
      break;
    case platform::kServiceControlPause:
      LogInfo(kHandler, "SERVICE_CONTROL_PAUSE");
      ReportServiceStatus(platform::kServicePausePending, 0, 0);
      break;
    case platform::kServiceControlContinue:
      LogInfo(kHandler, "SERVICE_CONTROL_CONTINUE");
      ReportServiceStatus(platform::kServiceContinuePending, 0, 0);
      break;
    case platform::kServiceControlDeviceEvent:
      OnDeviceEvent(eventType, eventData);
      break;
    case platform::kServiceControlPowerEvent:
      OnPowerEvent(eventData);
      break;
    case platform::kServiceControlSessionChange:
      // Only logged: a logon adds no task.
      if (eventType >= 1 && eventType < kSessionChanges.size()) {
        LogInfo(kHandler, "%s", kSessionChanges[eventType]);
      }
      break;
    default:
      break;
  }
  return 0;
}

}  // namespace nuvelta
