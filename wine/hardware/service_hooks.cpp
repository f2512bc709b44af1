// What the service asks of the service control manager, the power manager and the
// shell. The manager and the shell are Wine's own; notifications come from the
// story.
#include <windows.h>

#include <shellapi.h>

#include <array>
#include <string>
#include <thread>

#include "notebook/model/unicode.h"
#include "platform/service_control.h"
#include "wine/hardware/control_queue.h"
#include "wine/hardware/hooks.h"
#include "wine/hardware/import_table.h"
#include "wine/hardware/played_story.h"
#include "wine/hardware/power_queue.h"
#include "wine/hardware/story_clock.h"

namespace nuvelta::wine {

namespace {

using namespace std::chrono_literals;

decltype(&StartServiceCtrlDispatcherW) g_dispatch;
decltype(&RegisterServiceCtrlHandlerExW) g_register_handler;
decltype(&SetServiceStatus) g_set_status;
decltype(&OpenSCManagerW) g_open_manager;
decltype(&ShellExecuteExW) g_execute;

LPSERVICE_MAIN_FUNCTIONW g_service_main;

// Real time that the launched command line has for ending this process.
constexpr auto kRestartPatience = 20s;

void WINAPI ServiceMain(DWORD count, LPWSTR* arguments) {
  StoryClock::Get().Join(true);
  ControlQueue::Get().SetServiceRuns(true);
  g_service_main(count, arguments);
  ControlQueue::Get().SetServiceRuns(false);
  StoryClock::Get().Leave();
}

BOOL WINAPI StartDispatcher(const SERVICE_TABLE_ENTRYW* table) {
  if (PlayedStory::Current()->Fails("StartServiceCtrlDispatcherW")) return FALSE;
  g_service_main = table[0].lpServiceProc;
  const std::wstring name = table[0].lpServiceName;
  // Kept at work until ServiceMain has joined.
  StoryClock::Get().BeforeStart();
  std::thread([name] {
    std::wstring own_name = name;
    const std::array<SERVICE_TABLE_ENTRYW, 2> own{{{own_name.data(), ServiceMain}, {}}};
    const BOOL result = g_dispatch(own.data());
    const DWORD error = GetLastError();
    ControlQueue::Get().Finish(result, error);
    // Then no ServiceMain has joined.
    if (result == FALSE) StoryClock::Get().Leave();
  }).detach();
  return ControlQueue::Get().Serve();
}

DWORD WINAPI HandleReal(DWORD control, DWORD event_type, void* data, void* /*context*/) {
  return ControlQueue::Get().Deliver(control, event_type, data);
}

SERVICE_STATUS_HANDLE WINAPI RegisterHandler(LPCWSTR name, LPHANDLER_FUNCTION_EX handler,
                                             void* context) {
  if (PlayedStory::Current()->Fails("RegisterServiceCtrlHandlerExW")) return nullptr;
  ControlQueue::Get().SetHandler(handler, context);
  return g_register_handler(name, HandleReal, nullptr);
}

platform::ServiceStatus ManagersStatus(const std::string& key) {
  platform::ServiceStatus status;
  const SC_HANDLE manager = OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT);
  const std::u16string name = virtual_notebook::Utf16(key);
  const SC_HANDLE service =
      OpenServiceW(manager, reinterpret_cast<const wchar_t*>(name.c_str()), SERVICE_QUERY_STATUS);
  static_assert(sizeof(SERVICE_STATUS) == sizeof status);
  QueryServiceStatus(service, reinterpret_cast<SERVICE_STATUS*>(&status));
  CloseServiceHandle(service);
  CloseServiceHandle(manager);
  return status;
}

BOOL WINAPI SetStatus(SERVICE_STATUS_HANDLE handle, SERVICE_STATUS* status) {
  PlayedStory& story = *PlayedStory::Current();
  if (story.Fails("SetServiceStatus")) return FALSE;
  ControlQueue::Get().SetStatus(*status);
  const bool stopped = status->dwCurrentState == SERVICE_STOPPED;
  // Nothing becomes due any more: the process is about to end.
  if (stopped) StoryClock::Get().Freeze();
  const BOOL result = g_set_status(handle, status);
  const DWORD error = GetLastError();
  story.Write(StatusReported{.process = GetCurrentProcessId(),
                             .reported = *reinterpret_cast<const platform::ServiceStatus*>(status),
                             .managers = ManagersStatus(story.Notebook().service_key)});
  SetLastError(error);
  return result;
}

HPOWERNOTIFY WINAPI RegisterPowerSetting(HANDLE /*recipient*/, const GUID* /*setting*/,
                                         DWORD /*flags*/) {
  if (PlayedStory::Current()->Fails("RegisterPowerSettingNotification")) return nullptr;
  ControlQueue::Get().WantPowerSettings();
  return reinterpret_cast<HPOWERNOTIFY>(1);
}

HPOWERNOTIFY WINAPI RegisterSuspendResume(HANDLE recipient, DWORD /*flags*/) {
  if (PlayedStory::Current()->Fails("RegisterSuspendResumeNotification")) return nullptr;
  PowerQueue::Get().Register(*static_cast<const PowerSubscription*>(recipient));
  return reinterpret_cast<HPOWERNOTIFY>(2);
}

HDEVNOTIFY WINAPI RegisterDevice(HANDLE /*recipient*/, void* filter, DWORD /*flags*/) {
  if (PlayedStory::Current()->Fails("RegisterDeviceNotificationW")) return nullptr;
  const auto& wanted = *static_cast<const platform::DeviceInterfaceBroadcast*>(filter);
  if (wanted.dbcc_classguid == platform::kGuidDevInterfaceNet) ControlQueue::Get().WantDevices();
  return reinterpret_cast<HDEVNOTIFY>(3);
}

SC_HANDLE WINAPI OpenManager(LPCWSTR computer, LPCWSTR database, DWORD access) {
  if (PlayedStory::Current()->Fails("OpenSCManagerW")) return nullptr;
  return g_open_manager(computer, database, access);
}

std::string Utf8(const wchar_t* text) {
  return virtual_notebook::Utf8(reinterpret_cast<const char16_t*>(text));
}

BOOL WINAPI Execute(SHELLEXECUTEINFOW* info) {
  PlayedStory& story = *PlayedStory::Current();
  if (story.Fails("ShellExecuteExW")) return FALSE;
  // Written first: the command line may end this process at any moment.
  story.Write(Launched{Utf8(info->lpFile) + " " + Utf8(info->lpParameters)});
  StoryClock::Get().Freeze();
  std::thread([] {
    std::this_thread::sleep_for(kRestartPatience);
    StoryClock::Get().Thaw();
  }).detach();
  const BOOL result = g_execute(info);
  const DWORD error = GetLastError();
  if (result == FALSE) story.Write(Note{"the launch failed: error " + std::to_string(error)});
  SetLastError(error);
  return result;
}

}  // namespace

FARPROC SubstituteShellExecute(FARPROC original) {
  g_execute = reinterpret_cast<decltype(&ShellExecuteExW)>(reinterpret_cast<void*>(original));
  return reinterpret_cast<FARPROC>(reinterpret_cast<void*>(Execute));
}

void InstallServiceHooks() {
  g_dispatch = Replace("advapi32.dll", "StartServiceCtrlDispatcherW", StartDispatcher);
  g_register_handler = Replace("advapi32.dll", "RegisterServiceCtrlHandlerExW", RegisterHandler);
  g_set_status = Replace("advapi32.dll", "SetServiceStatus", SetStatus);
  g_open_manager = Replace("advapi32.dll", "OpenSCManagerW", OpenManager);
  Replace("user32.dll", "RegisterPowerSettingNotification", RegisterPowerSetting);
  Replace("user32.dll", "RegisterSuspendResumeNotification", RegisterSuspendResume);
  Replace("user32.dll", "RegisterDeviceNotificationW", RegisterDevice);
}

}  // namespace nuvelta::wine
