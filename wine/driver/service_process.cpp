#include "wine/driver/service_process.h"

#include <utility>

namespace nuvelta::wine {

namespace {

constexpr DWORD kKillPatienceMs = 10000;

}  // namespace

std::optional<ServiceProcess> ServiceProcess::Open(DWORD id) {
  Handle handle(
      OpenProcess(PROCESS_TERMINATE | PROCESS_QUERY_LIMITED_INFORMATION | SYNCHRONIZE, FALSE, id));
  if (handle == nullptr) return {};
  return ServiceProcess(id, std::move(handle));
}

bool ServiceProcess::Runs() const { return !AwaitEnd(0); }

DWORD ServiceProcess::ExitCode() const {
  DWORD code = 0;
  GetExitCodeProcess(m_handle.get(), &code);
  return code;
}

void ServiceProcess::Kill() const {
  TerminateProcess(m_handle.get(), 1);
  AwaitEnd(kKillPatienceMs);
}

bool ServiceProcess::AwaitEnd(DWORD milliseconds) const {
  return WaitForSingleObject(m_handle.get(), milliseconds) == WAIT_OBJECT_0;
}

}  // namespace nuvelta::wine
