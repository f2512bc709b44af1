#include <atomic>
#include <vector>

#include "platform/service_control.h"
#include "platform/windows/win32.h"
#include "platform/windows/windows_platform.h"

#include <dbt.h>
#include <shellapi.h>

namespace nuvelta::windows {

namespace {

using platform::ManagerHandle;
using platform::NotifyHandle;
using platform::StatusHandle;

static_assert(sizeof(SERVICE_STATUS) == sizeof(platform::ServiceStatus));
static_assert(sizeof(DEV_BROADCAST_DEVICEINTERFACE_W) ==
              sizeof(platform::DeviceInterfaceBroadcast));
static_assert(sizeof(SHELLEXECUTEINFOW) == platform::ShellExecuteInfo{}.cbSize);

// As DEVICE_NOTIFY_SUBSCRIBE_PARAMETERS (powrprof.h), which not every tool
// chain's headers have.
struct PowerSubscription {
  ULONG(CALLBACK* Callback)(void* context, ULONG type, void* setting);
  void* Context;
};

// The service's functions behind those that Win32 calls: one service a process.
std::atomic<platform::ServiceMainFunction> g_main;
std::atomic<platform::HandlerFunction> g_handler;
std::atomic<platform::PowerCallback> g_power_callback;

void WINAPI CallMain(DWORD /*count*/, LPWSTR* /*arguments*/) { g_main.load()(); }

DWORD WINAPI CallHandler(DWORD control, DWORD event_type, void* event_data, void* context) {
  return g_handler.load()(control, event_type, event_data, context);
}

ULONG CALLBACK CallPowerCallback(void* context, ULONG type, void* setting) {
  return g_power_callback.load()(context, type, setting);
}

class Win32ServiceControl final : public platform::ServiceControl {
 public:
  bool StartServiceCtrlDispatcherW(std::u16string_view name,
                                   platform::ServiceMainFunction main) override {
    g_main = main;
    std::wstring service = Terminated(name);
    const std::array<SERVICE_TABLE_ENTRYW, 2> table{{{service.data(), CallMain}, {}}};
    return ::StartServiceCtrlDispatcherW(table.data()) != FALSE;
  }

  StatusHandle RegisterServiceCtrlHandlerExW(std::u16string_view name,
                                             platform::HandlerFunction handler,
                                             void* context) override {
    g_handler = handler;
    return FromNative<StatusHandle>(
        ::RegisterServiceCtrlHandlerExW(Terminated(name).c_str(), CallHandler, context));
  }

  bool SetServiceStatus(StatusHandle handle, const platform::ServiceStatus& status) override {
    auto copy = std::bit_cast<SERVICE_STATUS>(status);
    return ::SetServiceStatus(ToNative<SERVICE_STATUS_HANDLE>(handle), &copy) != FALSE;
  }

  NotifyHandle RegisterPowerSettingNotification(StatusHandle recipient,
                                                const platform::Guid& setting,
                                                uint32_t flags) override {
    const GUID id = ToGuid(setting);
    return FromNative<NotifyHandle>(
        ::RegisterPowerSettingNotification(ToNative<HANDLE>(recipient), &id, flags));
  }

  NotifyHandle RegisterSuspendResumeNotification(platform::PowerCallback callback, void* context,
                                                 uint32_t flags) override {
    g_power_callback = callback;
    // Outlives the registration, which is never given up.
    static PowerSubscription subscription;
    subscription = {.Callback = CallPowerCallback, .Context = context};
    return FromNative<NotifyHandle>(::RegisterSuspendResumeNotification(&subscription, flags));
  }

  NotifyHandle RegisterDeviceNotificationW(StatusHandle recipient,
                                           const platform::DeviceInterfaceBroadcast& filter,
                                           uint32_t flags) override {
    auto copy = filter;
    return FromNative<NotifyHandle>(
        ::RegisterDeviceNotificationW(ToNative<HANDLE>(recipient), &copy, flags));
  }

  ManagerHandle OpenSCManagerW(uint32_t access) override {
    return FromNative<ManagerHandle>(::OpenSCManagerW(nullptr, nullptr, access));
  }

  bool EnumServicesStatusExW(ManagerHandle manager, uint32_t level, uint32_t type, uint32_t state,
                             void* buffer, uint32_t size, uint32_t& needed,
                             uint32_t& returned) override {
    DWORD bytes_needed = 0;
    DWORD services = 0;
    const BOOL success = ::EnumServicesStatusExW(
        ToNative<SC_HANDLE>(manager), static_cast<SC_ENUM_TYPE>(level), type, state,
        static_cast<BYTE*>(buffer), size, &bytes_needed, &services, nullptr, nullptr);
    needed = bytes_needed;
    returned = services;
    return success != FALSE;
  }

  platform::ServiceRecord ReadService(const void* buffer, uint32_t index) override {
    const auto& record = static_cast<const ENUM_SERVICE_STATUS_PROCESSW*>(buffer)[index];
    return {.lpServiceName = Utf16Chars(record.lpServiceName),
            .dwProcessId = record.ServiceStatusProcess.dwProcessId};
  }

  bool CloseServiceHandle(ManagerHandle manager) noexcept override {
    return ::CloseServiceHandle(ToNative<SC_HANDLE>(manager)) != FALSE;
  }

  bool ShellExecuteExW(const platform::ShellExecuteInfo& info) override {
    SHELLEXECUTEINFOW native{};
    native.cbSize = info.cbSize;
    native.fMask = info.fMask;
    native.lpVerb = WideChars(info.lpVerb.data());
    native.lpFile = WideChars(info.lpFile.data());
    native.lpParameters = WideChars(info.lpParameters.data());
    native.nShow = info.nShow;
    const auto execute = FindShellExecute();
    return execute != nullptr && execute(&native) != FALSE;
  }

 private:
  // Loaded for a restart alone, and kept: the shell brings two more libraries, and
  // every start would wait for all three.
  decltype(&::ShellExecuteExW) FindShellExecute() {
    if (m_shell == nullptr) {
      m_shell = LoadLibraryExW(L"shell32.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
    }
    if (m_shell == nullptr) return nullptr;
    return reinterpret_cast<decltype(&::ShellExecuteExW)>(
        reinterpret_cast<void*>(GetProcAddress(m_shell, "ShellExecuteExW")));
  }

  HMODULE m_shell = nullptr;  // used by the worker only
};

}  // namespace

platform::ServiceControl& WindowsServiceControl() { return Immortal<Win32ServiceControl>(); }

}  // namespace nuvelta::windows
