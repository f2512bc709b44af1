#include "tasks/self_restart.h"

#include <algorithm>
#include <array>
#include <string>

#include "common/func_trace.h"
#include "common/logger.h"
#include "common/scope_exit.h"
#include "common/text_util.h"
#include "platform/memory.h"
#include "platform/platform.h"
#include "platform/service_control.h"
#include "platform/threads.h"

namespace nuvelta {

namespace {

constexpr const char* kGetServiceName = "CommonUtil::GetServiceName";
constexpr const char* kRestartService = "CommonUtil::RestartService";
constexpr size_t kNameSize = 128;
constexpr size_t kParametersSize = 256;  // wide characters, with the terminator

void CopyName(const std::string& name, std::span<char> out) {
  const size_t length = std::min(name.size(), out.size() - 1);
  std::copy_n(name.begin(), length, out.begin());
  out[length] = '\0';
}

// Takes the first service of this process from a filled buffer.
uint32_t FindOwnService(const void* buffer, uint32_t count, std::span<char> name,
                        uint32_t& processId) {
  const uint32_t own = platform::Os().threads->GetCurrentProcessId();
  for (uint32_t i = 0; i < count; ++i) {
    const platform::ServiceRecord service = platform::Os().service_control->ReadService(buffer, i);
    if (service.dwProcessId != own) continue;
    const std::string narrow = ToAnsi(service.lpServiceName);
    LogInfo(kGetServiceName, "Service Name: %s\n", narrow.c_str());
    CopyName(narrow, name);
    processId = service.dwProcessId;
    return 1;
  }
  return 0;
}

bool Enumerate(platform::ManagerHandle manager, void* buffer, uint32_t size, uint32_t& needed,
               uint32_t& returned) {
  return platform::Os().service_control->EnumServicesStatusExW(
      manager, platform::kScEnumProcessInfo, platform::kServiceWin32, platform::kServiceStateAll,
      buffer, size, needed, returned);
}

// The command kills this process moments later, so the process handle that the
// launch leaves is neither waited for nor closed.
bool Launch(std::u16string_view parameters) {
  platform::ShellExecuteInfo info;
  info.fMask = platform::kSeeMaskNoCloseProcess;
  info.lpVerb = u"runas";
  info.lpFile = u"cmd.exe";
  info.lpParameters = parameters;
  info.nShow = platform::kSwHide;
  return platform::Os().service_control->ShellExecuteExW(info);
}

}  // namespace

uint32_t CommonUtil::GetServiceName(std::span<char> name, uint32_t& processId) {
  const CFuncTrace trace(kGetServiceName);
  platform::ServiceControl& control = *platform::Os().service_control;
  const platform::ManagerHandle manager = control.OpenSCManagerW(platform::kScManagerAllAccess);
  if (manager == platform::ManagerHandle{}) {
    const uint32_t error = platform::Os().threads->GetLastError();
    LogError(kGetServiceName, "OpenSCManager fail,error code 0x%x", error);
    return 0;
  }
  const ScopeExit close([&] { control.CloseServiceHandle(manager); });
  uint32_t size = 0;
  uint32_t returned = 0;
  if (Enumerate(manager, nullptr, 0, size, returned) ||
      platform::Os().threads->GetLastError() != platform::kErrorMoreData) {
    return 0;
  }
  platform::Memory& memory = *platform::Os().memory;
  void* buffer = memory.LocalAlloc(size);
  if (buffer == nullptr) return 0;
  const ScopeExit free([&] { memory.LocalFree(buffer); });
  uint32_t needed = 0;
  if (!Enumerate(manager, buffer, size, needed, returned)) return 0;
  return FindOwnService(buffer, returned, name, processId);
}

uint32_t CommonUtil::RestartService() {
  const CFuncTrace trace(kRestartService);
  std::array<char, kNameSize> name{};
  uint32_t processId = 0;
  if (GetServiceName(name, processId) == 0) {
    LogError(kRestartService, "Find service name fail,return false");
    return 0;
  }
  const std::u16string wide_name = ToWide(name.data());
  const std::string digits = std::to_string(static_cast<int32_t>(processId));
  std::u16string parameters = u"/C taskkill /pid " + std::u16string(digits.begin(), digits.end()) +
                              u" /f & net start \"" + wide_name + u"\"";
  parameters.resize(std::min(parameters.size(), kParametersSize - 1));
  LogInfo(kRestartService, "buffer %s", ToAnsi(parameters).c_str());
  if (!Launch(parameters)) {
    const uint32_t error = platform::Os().threads->GetLastError();
    LogInfo(kRestartService, " RestartService failed.Error = 0x%x", error);
    return 0;
  }
  LogInfo(kRestartService, " RestartService success.");
  return 1;
}

}  // namespace nuvelta
