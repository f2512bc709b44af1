// The calls of the ports that a story can refuse or delay: the one list of them, from
// which all that names such a call is made or checked.
#pragma once

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <string_view>

#include "notebook/model/scenario.h"
#include "platform/types.h"

namespace nuvelta::virtual_notebook {

// A call, the failures that it can give, and the time that it takes on a notebook.
struct PortCall {
  std::string_view name;
  bool can_fail = false;  // Fault::Kind::kError
  bool can_be_null = false;
  bool can_throw = false;  // kHresult and kBadAlloc
  uint32_t error = 0;      // the code, unless the scenario names another
  Duration duration{};     // spent before the call does anything
};

namespace port_calls {

using namespace std::chrono_literals;

inline constexpr uint32_t kInvalidFunction = 1;         // ERROR_INVALID_FUNCTION
inline constexpr uint32_t kSharingViolation = 32;       // ERROR_SHARING_VIOLATION
inline constexpr uint32_t kInvalidParameter = 87;       // ERROR_INVALID_PARAMETER
inline constexpr uint32_t kProcNotFound = 127;          // ERROR_PROC_NOT_FOUND
inline constexpr uint32_t kEnvironmentNotFound = 203;   // ERROR_ENVVAR_NOT_FOUND
inline constexpr uint32_t kNoData = 232;                // ERROR_NO_DATA
inline constexpr uint32_t kServiceDoesNotExist = 1060;  // ERROR_SERVICE_DOES_NOT_EXIST
inline constexpr uint32_t kNoTranslation = 1113;        // ERROR_NO_UNICODE_TRANSLATION
inline constexpr uint32_t kEventLogCorrupt = 1500;      // ERROR_EVENTLOG_FILE_CORRUPT
inline constexpr uint32_t kServerUnavailable = 1722;    // RPC_S_SERVER_UNAVAILABLE
inline constexpr uint32_t kNoResourceType = 1813;       // ERROR_RESOURCE_TYPE_NOT_FOUND
inline constexpr uint32_t kStatusUnsuccessful = 0xC0000001;
inline constexpr uint32_t kDeviceFailed = 0x8007001F;  // ERROR_GEN_FAILURE as an HRESULT

constexpr PortCall Fails(std::string_view name, uint32_t error, Duration duration = {}) {
  return {.name = name, .can_fail = true, .error = error, .duration = duration};
}

constexpr PortCall Throws(std::string_view name) {
  return {.name = name, .can_throw = true, .error = kDeviceFailed};
}

// Null is an answer of these calls, beside their throwing.
constexpr PortCall ThrowsOrNull(std::string_view name, Duration duration = {}) {
  return {.name = name,
          .can_be_null = true,
          .can_throw = true,
          .error = kDeviceFailed,
          .duration = duration};
}

// In alphabetical order. Calls that close or free something are not here: nothing rests
// on their answer.
inline constexpr std::array kAll{
    Throws("AccountWatcher::AccountAdded"),
    Throws("AccountWatcher::AccountRemoved"),
    Throws("AccountWatcher::EnumerationCompleted"),
    Throws("AccountWatcher::Start"),
    Throws("AccountWatcher::Status"),
    Throws("CommandOperation::Completed"),
    ThrowsOrNull("CommandOperation::GetResults"),
    ThrowsOrNull("CommandResult::ResponseData"),
    Throws("CommandResult::StatusCode"),
    Throws("CommandSession::CloseSession"),
    ThrowsOrNull("CommandSession::SendQueryCommandAsync"),
    ThrowsOrNull("CommandSession::SendSetCommandAsync"),
    Fails("CreateEventW", platform::kErrorNotEnoughMemory),
    Fails("CreateThread", platform::kErrorNotEnoughMemory),
    ThrowsOrNull("DataBuffer::Buffer"),
    Throws("DataBuffer::Length"),
    ThrowsOrNull("DataWriter::DetachBuffer"),
    Throws("DataWriter::WriteBytes"),
    Fails("DeleteFileA", kSharingViolation),
    ThrowsOrNull("DeviceService::OpenCommandSession", 5ms),
    Throws("DeviceServiceInformation::DeviceServiceId"),
    ThrowsOrNull("DeviceServiceList::GetAt"),
    Throws("DeviceServiceList::Size"),
    Fails("EnumServicesStatusExW", platform::kErrorAccessDenied),
    Fails("FileTimeToLocalFileTime", kInvalidParameter),
    Fails("FileTimeToSystemTime", kInvalidParameter),
    Fails("FindFirstFileA", platform::kErrorPathNotFound),
    Fails("FindNextFileA", platform::kErrorAccessDenied),
    Fails("GetAdaptersAddresses", kNoData, 3ms),
    Fails("GetFileVersionInfoSizeW", kNoResourceType),
    Fails("GetFileVersionInfoW", kNoResourceType),
    Fails("GetModuleFileNameW", platform::kErrorNotEnoughMemory),
    Fails("GetSystemFirmwareTable", kInvalidFunction),
    Fails("GetVariable", kEnvironmentNotFound),
    Fails("HeapAlloc", platform::kErrorNotEnoughMemory),
    Fails("LocalAlloc", platform::kErrorNotEnoughMemory),
    Fails("LookUpNtQuerySystemInformation", kProcNotFound),
    ThrowsOrNull("MobileBroadband::CreateAccountWatcher"),
    ThrowsOrNull("MobileBroadband::CreateDataWriter"),
    ThrowsOrNull("MobileBroadband::GetDefault", 5ms),
    ThrowsOrNull("Modem::DeviceServices"),
    ThrowsOrNull("Modem::GetDeviceService", 2ms),
    Fails("MultiByteToWideChar", kNoTranslation),
    Fails("NtQuerySystemInformation", kStatusUnsuccessful),
    Fails("OpenEventLogW", kServerUnavailable, 5ms),
    Fails("OpenSCManagerW", platform::kErrorAccessDenied, 20ms),
    Fails("ReadEventLogW", kEventLogCorrupt),
    Fails("RegEnumKeyExA", platform::kErrorAccessDenied),
    Fails("RegOpenKeyExA", platform::kErrorAccessDenied),
    Fails("RegOpenKeyExW", platform::kErrorAccessDenied),
    Fails("RegQueryValueExA", platform::kErrorFileNotFound),
    Fails("RegQueryValueExW", platform::kErrorFileNotFound),
    Fails("RegisterDeviceNotificationW", platform::kErrorInvalidData, 1ms),
    Fails("RegisterPowerSettingNotification", platform::kErrorInvalidHandle, 1ms),
    Fails("RegisterServiceCtrlHandlerExW", kServiceDoesNotExist, 2ms),
    Fails("RegisterSuspendResumeNotification", kInvalidParameter, 1ms),
    Fails("ResetEvent", platform::kErrorInvalidHandle),
    Fails("SetEvent", platform::kErrorInvalidHandle),
    Fails("SetServiceStatus", platform::kErrorInvalidHandle, 1ms),
    Fails("SetupDiEnumDeviceInfo", platform::kErrorInvalidData),
    Fails("SetupDiGetClassDevsW", platform::kErrorInvalidData, 5ms),
    Fails("SetupDiGetDeviceRegistryPropertyW", platform::kErrorInvalidData),
    Fails("SetupDiOpenClassRegKeyExW", platform::kErrorAccessDenied),
    Fails("ShellExecuteExW", platform::kErrorCancelled, 150ms),
    Fails("StartDetachedThread", platform::kErrorNotEnoughMemory),
    Fails("StartServiceCtrlDispatcherW", platform::kErrorFailedServiceControllerConnect, 2ms),
    Fails("VerQueryValueW", kNoResourceType),
    Fails("WTSEnumerateSessionsW", kServerUnavailable, 2ms),
    Fails("WaitForSingleObject", platform::kErrorInvalidHandle),
    Fails("WideCharToMultiByte", kNoTranslation),
    Fails("_mkdir", platform::kErrorAccessDenied),
};

static_assert(std::ranges::is_sorted(kAll, {}, &PortCall::name), "FindCall searches by halves");

}  // namespace port_calls

inline constexpr const auto& kPortCalls = port_calls::kAll;

// Null when there is no such call.
constexpr const PortCall* FindCall(std::string_view name) {
  const auto* const found = std::ranges::lower_bound(kPortCalls, name, {}, &PortCall::name);
  return found != kPortCalls.end() && found->name == name ? found : nullptr;
}

// A call of the list, by its name in the source: any other name does not compile.
class KnownCall {
 public:
  consteval KnownCall(const char* name) : m_call(FindCall(name)) {  // NOLINT: meant to convert
    if (m_call == nullptr) throw "port_calls.h has no such call";
  }
  std::string_view Name() const { return m_call->name; }
  Duration Takes() const { return m_call->duration; }

 private:
  const PortCall* m_call;
};

}  // namespace nuvelta::virtual_notebook
