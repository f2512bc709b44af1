#include "service/service_status.h"

#include <atomic>

#include "common/func_trace.h"
#include "common/logger.h"
#include "platform/platform.h"
#include "platform/service_control.h"
#include "service/service_state.h"

namespace nuvelta {

namespace {

// A SERVICE_STATUS whose members two threads may write.
struct StatusRecord {
  std::atomic<uint32_t> dwServiceType;
  std::atomic<uint32_t> dwCurrentState;
  std::atomic<uint32_t> dwControlsAccepted;
  std::atomic<uint32_t> dwWin32ExitCode;
  std::atomic<uint32_t> dwServiceSpecificExitCode;
  std::atomic<uint32_t> dwCheckPoint;
  std::atomic<uint32_t> dwWaitHint;
};

constexpr uint32_t kFirstCheckPoint = 1;

StatusRecord g_ServiceStatus{};
std::atomic<uint32_t> g_dwCheckPoint{kFirstCheckPoint};

platform::ServiceStatus Snapshot() {
  return {.dwServiceType = g_ServiceStatus.dwServiceType,
          .dwCurrentState = g_ServiceStatus.dwCurrentState,
          .dwControlsAccepted = g_ServiceStatus.dwControlsAccepted,
          .dwWin32ExitCode = g_ServiceStatus.dwWin32ExitCode,
          .dwServiceSpecificExitCode = g_ServiceStatus.dwServiceSpecificExitCode,
          .dwCheckPoint = g_ServiceStatus.dwCheckPoint,
          .dwWaitHint = g_ServiceStatus.dwWaitHint};
}

}  // namespace

void InitServiceStatus() {
  g_ServiceStatus.dwServiceType = platform::kServiceWin32OwnProcess;
  g_ServiceStatus.dwServiceSpecificExitCode = 0;
}

void ReportServiceStatus(uint32_t currentState, uint32_t /*win32ExitCode*/, uint32_t waitHintMs) {
  constexpr const char* kName = "ReportServiceStatus";
  const CFuncTrace trace(kName);
  // [fixed] the same set in every other state, the stopped one included.
  const uint32_t controls =
      currentState == platform::kServiceStartPending
          ? 0
          : platform::kServiceAcceptStop | platform::kServiceAcceptSessionChange;
  const bool settled =
      currentState == platform::kServiceRunning || currentState == platform::kServiceStopped;
  g_ServiceStatus.dwCurrentState = currentState;
  g_ServiceStatus.dwWin32ExitCode = 0;
  g_ServiceStatus.dwWaitHint = waitHintMs;
  g_ServiceStatus.dwControlsAccepted = controls;
  LogInfo(kName, "dwControlsAccepted = 0x%x", controls);
  g_ServiceStatus.dwCheckPoint = settled ? 0 : g_dwCheckPoint++;
  platform::Os().service_control->SetServiceStatus(g_hServiceStatus, Snapshot());
}

void MakeStatusAfreshForSimulation() {
  g_ServiceStatus.dwServiceType = 0;
  g_ServiceStatus.dwCurrentState = 0;
  g_ServiceStatus.dwControlsAccepted = 0;
  g_ServiceStatus.dwWin32ExitCode = 0;
  g_ServiceStatus.dwServiceSpecificExitCode = 0;
  g_ServiceStatus.dwCheckPoint = 0;
  g_ServiceStatus.dwWaitHint = 0;
  g_dwCheckPoint = kFirstCheckPoint;
}

}  // namespace nuvelta
