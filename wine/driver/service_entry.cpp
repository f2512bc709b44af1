#include "wine/driver/service_entry.h"

#include <stdexcept>

namespace nuvelta::wine {

namespace {

constexpr DWORD kEndPatienceMs = 10000;
constexpr DWORD kRetryMs = 20;

SERVICE_STATUS_PROCESS StatusOf(SC_HANDLE service) {
  SERVICE_STATUS_PROCESS status{};
  DWORD needed = 0;
  if (QueryServiceStatusEx(service, SC_STATUS_PROCESS_INFO, reinterpret_cast<BYTE*>(&status),
                           sizeof status, &needed) == FALSE) {
    return {};
  }
  return status;
}

}  // namespace

ServiceEntry::ServiceEntry(const std::string& key)
    : m_manager(OpenSCManagerW(nullptr, nullptr, SC_MANAGER_ALL_ACCESS)),
      m_service(OpenServiceW(m_manager.get(), Wide(key).c_str(), SERVICE_ALL_ACCESS)) {
  if (m_service == nullptr) {
    throw std::runtime_error("the service is not installed: error " +
                             std::to_string(GetLastError()));
  }
}

ServiceEntry::ServiceEntry(const std::string& key, const std::filesystem::path& executable)
    : m_manager(OpenSCManagerW(nullptr, nullptr, SC_MANAGER_ALL_ACCESS)) {
  const std::wstring name = Wide(key);
  const std::wstring path = L"\"" + executable.wstring() + L"\"";
  const auto create = [&] {
    return CreateServiceW(m_manager.get(), name.c_str(), name.c_str(), SERVICE_ALL_ACCESS,
                          SERVICE_WIN32_OWN_PROCESS, SERVICE_DEMAND_START, SERVICE_ERROR_NORMAL,
                          path.c_str(), nullptr, nullptr, nullptr, nullptr, nullptr);
  };
  m_service.reset(create());
  // An entry that was just deleted stays until its process's end has been noted.
  for (DWORD waited = 0; m_service == nullptr && waited < kEndPatienceMs &&
                         GetLastError() == ERROR_SERVICE_MARKED_FOR_DELETE;
       waited += kRetryMs) {
    Sleep(kRetryMs);
    m_service.reset(create());
  }
  if (m_service == nullptr) {
    throw std::runtime_error("the service cannot be created: error " +
                             std::to_string(GetLastError()));
  }
}

DWORD ServiceEntry::Start() const {
  return StartServiceW(m_service.get(), 0, nullptr) != FALSE ? ERROR_SUCCESS : GetLastError();
}

DWORD ServiceEntry::Stop() const {
  SERVICE_STATUS status{};
  return ControlService(m_service.get(), SERVICE_CONTROL_STOP, &status) != FALSE ? ERROR_SUCCESS
                                                                                 : GetLastError();
}

SERVICE_STATUS_PROCESS ServiceEntry::Status() const { return StatusOf(m_service.get()); }

void ServiceEntry::StopStarted() const {
  if (!Await(SERVICE_RUNNING) || Stop() != ERROR_SUCCESS || !Await(SERVICE_STOPPED)) {
    throw std::runtime_error("the installed service does not start and stop");
  }
}

bool ServiceEntry::Await(DWORD state) const {
  for (DWORD waited = 0; waited < kEndPatienceMs; waited += kRetryMs) {
    if (Status().dwCurrentState == state) return true;
    Sleep(kRetryMs);
  }
  return false;
}

void ServiceEntry::Remove(const std::string& key) {
  const ServiceHandle manager(OpenSCManagerW(nullptr, nullptr, SC_MANAGER_ALL_ACCESS));
  if (manager == nullptr) return;
  const ServiceHandle service(OpenServiceW(manager.get(), Wide(key).c_str(), SERVICE_ALL_ACCESS));
  if (service == nullptr) return;
  const DWORD id = StatusOf(service.get()).dwProcessId;
  const Handle process(id != 0 ? OpenProcess(PROCESS_TERMINATE | SYNCHRONIZE, FALSE, id) : nullptr);
  if (process != nullptr) {
    TerminateProcess(process.get(), 1);
    WaitForSingleObject(process.get(), kEndPatienceMs);
  }
  DeleteService(service.get());
}

}  // namespace nuvelta::wine
