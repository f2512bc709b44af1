// The virtual notebook's network adapters and their class key.
#pragma once

#include <vector>

#include "notebook/machine/context.h"
#include "notebook/machine/virtual_registry.h"
#include "notebook/model/modem_model.h"
#include "platform/network.h"

namespace nuvelta::virtual_notebook {

class VirtualNetwork final : public platform::NetworkAdapters {
 public:
  VirtualNetwork(Context& context, VirtualRegistry& registry, const ModemModel& modem,
                 std::vector<Adapter> adapters);

  uint32_t GetAdaptersAddresses(uint32_t family, uint32_t flags, void* buffer,
                                uint32_t& size) override;
  platform::AdapterRecord ReadAdapter(const void* record) override;
  platform::KeyHandle SetupDiOpenClassRegKeyExW(const platform::Guid& device_class, uint32_t access,
                                                uint32_t flags) override;

  // Writes the modem's entry below the class key, as its installation does; it
  // stays there, so a modem that comes back adds none.
  void InstallModem();

 private:
  void AddToClassKey(const Adapter& adapter);

  Context& m_context;
  VirtualRegistry& m_registry;
  const ModemModel& m_modem;
  std::vector<Adapter> m_adapters;
  uint32_t m_next_subkey = 0;
  bool m_modem_installed = false;
};

}  // namespace nuvelta::virtual_notebook
