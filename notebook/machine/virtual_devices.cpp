#include "notebook/machine/virtual_devices.h"

#include <cstring>

#include "notebook/model/device_tables.h"

namespace nuvelta::virtual_notebook {

platform::DeviceSetHandle VirtualDevices::SetupDiGetClassDevsW(uint32_t /*flags*/) {
  if (m_context.Fails("SetupDiGetClassDevsW")) {
    return platform::InvalidHandle<platform::DeviceSetHandle>();
  }
  std::vector<Device> present = PresentDevices(m_devices, m_modem.Description());
  const std::lock_guard lock(m_mutex);
  m_sets.emplace(m_next_handle, std::move(present));
  return static_cast<platform::DeviceSetHandle>(m_next_handle++);
}

const Device* VirtualDevices::Find(platform::DeviceSetHandle set, uint32_t index) const {
  const auto found = m_sets.find(static_cast<uintptr_t>(set));
  if (found == m_sets.end() || index >= found->second.size()) return nullptr;
  return &found->second[index];
}

bool VirtualDevices::SetupDiEnumDeviceInfo(platform::DeviceSetHandle set, uint32_t index,
                                           platform::DeviceInfoData& device) {
  if (m_context.Fails("SetupDiEnumDeviceInfo")) return false;
  const std::lock_guard lock(m_mutex);
  if (Find(set, index) == nullptr) {
    Context::SetLastError(platform::kErrorNoMoreItems);
    return false;
  }
  device.DevInst = index;
  return true;
}

bool VirtualDevices::SetupDiGetDeviceRegistryPropertyW(platform::DeviceSetHandle set,
                                                       platform::DeviceInfoData& device,
                                                       uint32_t property,
                                                       std::span<std::byte> buffer) {
  if (m_context.Fails("SetupDiGetDeviceRegistryPropertyW")) return false;
  const std::lock_guard lock(m_mutex);
  const Device* found = Find(set, device.DevInst);
  if (found == nullptr || property != platform::kSpdrpHardwareId || !found->has_hardware_id) {
    Context::SetLastError(platform::kErrorInvalidData);
    return false;
  }
  const std::vector<uint8_t> bytes = HardwareIdBytes(*found);
  if (bytes.size() > buffer.size()) {
    Context::SetLastError(platform::kErrorInsufficientBuffer);
    return false;
  }
  if (!bytes.empty()) std::memcpy(buffer.data(), bytes.data(), bytes.size());
  return true;
}

bool VirtualDevices::SetupDiDestroyDeviceInfoList(platform::DeviceSetHandle set) noexcept {
  const std::lock_guard lock(m_mutex);
  return m_sets.erase(static_cast<uintptr_t>(set)) != 0;
}

void VirtualDevices::EndProcess() {
  const std::lock_guard lock(m_mutex);
  m_sets.clear();
}

size_t VirtualDevices::OpenHandles() const {
  const std::lock_guard lock(m_mutex);
  return m_sets.size();
}

}  // namespace nuvelta::virtual_notebook
