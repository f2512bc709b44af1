#include "notebook/model/fault_plan.h"

#include <algorithm>
#include <array>
#include <utility>

#include "platform/types.h"

namespace nuvelta::virtual_notebook {

namespace {

constexpr uint32_t kInvalidFunction = 1;         // ERROR_INVALID_FUNCTION
constexpr uint32_t kSharingViolation = 32;       // ERROR_SHARING_VIOLATION
constexpr uint32_t kInvalidParameter = 87;       // ERROR_INVALID_PARAMETER
constexpr uint32_t kProcNotFound = 127;          // ERROR_PROC_NOT_FOUND
constexpr uint32_t kEnvironmentNotFound = 203;   // ERROR_ENVVAR_NOT_FOUND
constexpr uint32_t kNoData = 232;                // ERROR_NO_DATA
constexpr uint32_t kServiceDoesNotExist = 1060;  // ERROR_SERVICE_DOES_NOT_EXIST
constexpr uint32_t kNoTranslation = 1113;        // ERROR_NO_UNICODE_TRANSLATION
constexpr uint32_t kEventLogCorrupt = 1500;      // ERROR_EVENTLOG_FILE_CORRUPT
constexpr uint32_t kServerUnavailable = 1722;    // RPC_S_SERVER_UNAVAILABLE
constexpr uint32_t kNoResourceType = 1813;       // ERROR_RESOURCE_TYPE_NOT_FOUND
constexpr uint32_t kStatusUnsuccessful = 0xC0000001;
constexpr uint32_t kDeviceFailed = 0x8007001F;  // ERROR_GEN_FAILURE as an HRESULT

constexpr CallFailures Fails(std::string_view call, uint32_t error) {
  return {.call = call, .can_fail = true, .error = error};
}

constexpr CallFailures Throws(std::string_view call) {
  return {.call = call, .can_throw = true, .error = kDeviceFailed};
}

// Null is an answer of these calls, beside their throwing.
constexpr CallFailures ThrowsOrNull(std::string_view call) {
  return {.call = call, .can_be_null = true, .can_throw = true, .error = kDeviceFailed};
}

// Calls that close or free something are not here: nothing rests on their answer.
constexpr std::array kCalls{
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
    ThrowsOrNull("DeviceService::OpenCommandSession"),
    Throws("DeviceServiceInformation::DeviceServiceId"),
    ThrowsOrNull("DeviceServiceList::GetAt"),
    Throws("DeviceServiceList::Size"),
    Fails("EnumServicesStatusExW", platform::kErrorAccessDenied),
    Fails("FileTimeToLocalFileTime", kInvalidParameter),
    Fails("FileTimeToSystemTime", kInvalidParameter),
    Fails("FindFirstFileA", platform::kErrorPathNotFound),
    Fails("FindNextFileA", platform::kErrorAccessDenied),
    Fails("GetAdaptersAddresses", kNoData),
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
    ThrowsOrNull("MobileBroadband::GetDefault"),
    ThrowsOrNull("Modem::DeviceServices"),
    ThrowsOrNull("Modem::GetDeviceService"),
    Fails("MultiByteToWideChar", kNoTranslation),
    Fails("NtQuerySystemInformation", kStatusUnsuccessful),
    Fails("OpenEventLogW", kServerUnavailable),
    Fails("OpenSCManagerW", platform::kErrorAccessDenied),
    Fails("ReadEventLogW", kEventLogCorrupt),
    Fails("RegEnumKeyExA", platform::kErrorAccessDenied),
    Fails("RegOpenKeyExA", platform::kErrorAccessDenied),
    Fails("RegOpenKeyExW", platform::kErrorAccessDenied),
    Fails("RegQueryValueExA", platform::kErrorFileNotFound),
    Fails("RegQueryValueExW", platform::kErrorFileNotFound),
    Fails("RegisterDeviceNotificationW", platform::kErrorInvalidData),
    Fails("RegisterPowerSettingNotification", platform::kErrorInvalidHandle),
    Fails("RegisterServiceCtrlHandlerExW", kServiceDoesNotExist),
    Fails("RegisterSuspendResumeNotification", kInvalidParameter),
    Fails("ResetEvent", platform::kErrorInvalidHandle),
    Fails("SetEvent", platform::kErrorInvalidHandle),
    Fails("SetServiceStatus", platform::kErrorInvalidHandle),
    Fails("SetupDiEnumDeviceInfo", platform::kErrorInvalidData),
    Fails("SetupDiGetClassDevsW", platform::kErrorInvalidData),
    Fails("SetupDiGetDeviceRegistryPropertyW", platform::kErrorInvalidData),
    Fails("SetupDiOpenClassRegKeyExW", platform::kErrorAccessDenied),
    Fails("ShellExecuteExW", platform::kErrorCancelled),
    Fails("StartDetachedThread", platform::kErrorNotEnoughMemory),
    Fails("StartServiceCtrlDispatcherW", platform::kErrorFailedServiceControllerConnect),
    Fails("VerQueryValueW", kNoResourceType),
    Fails("WTSEnumerateSessionsW", kServerUnavailable),
    Fails("WaitForSingleObject", platform::kErrorInvalidHandle),
    Fails("WideCharToMultiByte", kNoTranslation),
    Fails("_mkdir", platform::kErrorAccessDenied),
};

static_assert(std::ranges::is_sorted(kCalls, {}, &CallFailures::call),
              "FindCall searches by halves");

bool Covers(const Fault& fault, std::string_view call, uint32_t nth) {
  return fault.call == call && nth >= fault.nth &&
         (fault.count == 0 || nth - fault.nth < fault.count);
}

}  // namespace

std::span<const CallFailures> KnownCalls() { return kCalls; }

const CallFailures* FindCall(std::string_view call) {
  const auto* const found = std::ranges::lower_bound(kCalls, call, {}, &CallFailures::call);
  return found != kCalls.end() && found->call == call ? found : nullptr;
}

FaultPlan::FaultPlan(std::vector<Fault> faults)
    : m_faults(std::move(faults)), m_fired_once(m_faults.size()) {}

std::optional<Fault> FaultPlan::Count(std::string_view call) {
  const std::lock_guard lock(m_mutex);
  auto count = m_counts.find(call);
  if (count == m_counts.end()) count = m_counts.emplace(call, 0).first;
  const uint32_t nth = ++count->second;
  for (size_t i = 0; i < m_faults.size(); ++i) {
    const Fault& fault = m_faults[i];
    if (!Covers(fault, call, nth)) continue;
    m_fired_once[i] = true;
    m_fired.push_back({.call = fault.call, .nth = nth, .kind = fault.kind, .code = fault.code});
    return fault;
  }
  return {};
}

std::vector<FiredFault> FaultPlan::Fired() const {
  const std::lock_guard lock(m_mutex);
  return m_fired;
}

std::map<std::string, uint32_t, std::less<>> FaultPlan::Counts() const {
  const std::lock_guard lock(m_mutex);
  return m_counts;
}

std::vector<Fault> FaultPlan::NotFired() const {
  const std::lock_guard lock(m_mutex);
  std::vector<Fault> rest;
  for (size_t i = 0; i < m_faults.size(); ++i) {
    if (!m_fired_once[i]) rest.push_back(m_faults[i]);
  }
  return rest;
}

}  // namespace nuvelta::virtual_notebook
