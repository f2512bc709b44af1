// What a service asks of the manager, and of the shell, in order to restart itself.
#include <algorithm>
#include <cstring>

#include "notebook/machine/virtual_service_control.h"
#include "notebook/model/unicode.h"

namespace nuvelta::virtual_notebook {

namespace {

// The records that EnumServicesStatusExW leaves in the caller's buffer: the
// count first, then the records, then their names.
struct ServiceEntry {
  std::u16string name;
  uint32_t process = 0;
};

size_t SizeOf(const std::vector<ServiceEntry>& entries) {
  size_t size = 0;
  for (const ServiceEntry& entry : entries) {
    size += sizeof(platform::ServiceRecord) + (entry.name.size() + 1) * sizeof(char16_t);
  }
  return size;
}

}  // namespace

platform::ManagerHandle VirtualServiceControl::OpenSCManagerW(uint32_t /*access*/) {
  if (m_context.Fails("OpenSCManagerW")) return {};
  return static_cast<platform::ManagerHandle>(0x5D);
}

bool VirtualServiceControl::EnumServicesStatusExW(platform::ManagerHandle /*manager*/,
                                                  uint32_t /*level*/, uint32_t /*type*/,
                                                  uint32_t /*state*/, void* buffer, uint32_t size,
                                                  uint32_t& needed, uint32_t& returned) {
  needed = 0;
  returned = 0;
  if (m_context.Fails("EnumServicesStatusExW")) return false;
  std::vector<ServiceEntry> entries;
  for (const ListedService& service : m_services) {
    entries.push_back({Utf16(service.name), service.process});
  }
  {
    const std::lock_guard lock(m_mutex);
    auto own = std::ranges::find(entries, m_service_key, &ServiceEntry::name);
    if (own == entries.end()) own = entries.insert(own, {m_service_key, 0});
    own->process = m_process;
  }
  const size_t total = SizeOf(entries);
  if (buffer == nullptr || size < total) {
    needed = static_cast<uint32_t>(total);
    Context::SetLastError(platform::kErrorMoreData);
    return false;
  }
  auto* record = static_cast<platform::ServiceRecord*>(buffer);
  auto* name = reinterpret_cast<char16_t*>(record + entries.size());
  for (const ServiceEntry& entry : entries) {
    std::memcpy(name, entry.name.c_str(), (entry.name.size() + 1) * sizeof(char16_t));
    *record++ = {.lpServiceName = name, .dwProcessId = entry.process};
    name += entry.name.size() + 1;
  }
  returned = static_cast<uint32_t>(entries.size());
  return true;
}

platform::ServiceRecord VirtualServiceControl::ReadService(const void* buffer, uint32_t index) {
  return static_cast<const platform::ServiceRecord*>(buffer)[index];
}

bool VirtualServiceControl::CloseServiceHandle(platform::ManagerHandle manager) noexcept {
  return manager != platform::ManagerHandle{};
}

bool VirtualServiceControl::ShellExecuteExW(const platform::ShellExecuteInfo& info) {
  if (m_context.Fails("ShellExecuteExW")) return false;
  m_launch(Utf8(info.lpFile) + " " + Utf8(info.lpParameters));
  return true;
}

}  // namespace nuvelta::virtual_notebook
