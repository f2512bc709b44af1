// The virtual notebook's present devices and their hardware ids.
#pragma once

#include <map>
#include <mutex>
#include <vector>

#include "notebook/machine/context.h"
#include "notebook/model/modem_model.h"
#include "platform/devices.h"

namespace nuvelta::virtual_notebook {

class VirtualDevices final : public platform::Devices {
 public:
  VirtualDevices(Context& context, const ModemModel& modem, std::vector<Device> devices)
      : m_context(context), m_modem(modem), m_devices(std::move(devices)) {}

  platform::DeviceSetHandle SetupDiGetClassDevsW(uint32_t flags) override;
  bool SetupDiEnumDeviceInfo(platform::DeviceSetHandle set, uint32_t index,
                             platform::DeviceInfoData& device) override;
  bool SetupDiGetDeviceRegistryPropertyW(platform::DeviceSetHandle set,
                                         platform::DeviceInfoData& device, uint32_t property,
                                         std::span<std::byte> buffer) override;
  bool SetupDiDestroyDeviceInfoList(platform::DeviceSetHandle set) noexcept override;

  void EndProcess();
  size_t OpenHandles() const;

 private:
  const Device* Find(platform::DeviceSetHandle set, uint32_t index) const;

  Context& m_context;
  const ModemModel& m_modem;
  std::vector<Device> m_devices;
  mutable std::mutex m_mutex;
  std::map<uintptr_t, std::vector<Device>> m_sets;
  uintptr_t m_next_handle = 0x2000;
};

}  // namespace nuvelta::virtual_notebook
