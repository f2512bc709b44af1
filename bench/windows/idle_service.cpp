// A service that does nothing but run until it is stopped: what the service's
// start is compared with. Its name is the service's, so that the same driver
// starts both.
#include <array>

#include "platform/windows/win32.h"

namespace {

constexpr wchar_t kName[] = L"Nuvelta Wireless AUTH Service HX2208";

SERVICE_STATUS_HANDLE g_status;
HANDLE g_stop;

void Report(DWORD state, DWORD accepted) {
  SERVICE_STATUS status{};
  status.dwServiceType = SERVICE_WIN32_OWN_PROCESS;
  status.dwCurrentState = state;
  status.dwControlsAccepted = accepted;
  SetServiceStatus(g_status, &status);
}

DWORD WINAPI Handle(DWORD control, DWORD /*event_type*/, void* /*data*/, void* /*context*/) {
  if (control == SERVICE_CONTROL_STOP) SetEvent(g_stop);
  return NO_ERROR;
}

void WINAPI Main(DWORD /*count*/, LPWSTR* /*arguments*/) {
  g_status = RegisterServiceCtrlHandlerExW(kName, Handle, nullptr);
  Report(SERVICE_START_PENDING, 0);
  g_stop = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  Report(SERVICE_RUNNING, SERVICE_ACCEPT_STOP);
  WaitForSingleObject(g_stop, INFINITE);
  Report(SERVICE_STOPPED, 0);
}

}  // namespace

int wmain(int /*argc*/, wchar_t** /*argv*/, wchar_t** /*envp*/) {
  std::wstring name = kName;
  const std::array<SERVICE_TABLE_ENTRYW, 2> table{{{name.data(), Main}, {}}};
  return StartServiceCtrlDispatcherW(table.data()) != FALSE ? 0 : static_cast<int>(GetLastError());
}
