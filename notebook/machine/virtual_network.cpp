#include "notebook/machine/virtual_network.h"

#include <cstdio>
#include <new>

#include "notebook/machine/code_page.h"
#include "notebook/model/device_tables.h"
#include "notebook/model/unicode.h"

namespace nuvelta::virtual_notebook {

namespace {

AdapterLayout LayoutOf(const Adapter& adapter) {
  return {adapter, ToCodePage(Utf16(adapter.name)), sizeof(platform::AdapterRecord),
          alignof(platform::AdapterRecord)};
}

}  // namespace

VirtualNetwork::VirtualNetwork(Context& context, VirtualRegistry& registry, const ModemModel& modem,
                               std::vector<Adapter> adapters)
    : m_context(context), m_registry(registry), m_modem(modem), m_adapters(std::move(adapters)) {
  m_registry.CreateKey(std::string(kNetworkClassKey) + "\\Configuration");
  for (const Adapter& adapter : m_adapters) AddToClassKey(adapter);
  if (m_modem.Description().present) InstallModem();
}

void VirtualNetwork::AddToClassKey(const Adapter& adapter) {
  if (!adapter.in_class_key) return;
  char number[16];
  std::snprintf(number, sizeof number, "%04u", m_next_subkey++);
  const std::string path = std::string(kNetworkClassKey) + "\\" + number;
  for (const auto& [name, text] : ClassKeyTexts(adapter)) m_registry.SetText(path, name, text);
}

void VirtualNetwork::InstallModem() {
  if (m_modem_installed) return;
  m_modem_installed = true;
  AddToClassKey(ModemAdapter(m_modem.Description()));
}

uint32_t VirtualNetwork::GetAdaptersAddresses(uint32_t /*family*/, uint32_t /*flags*/, void* buffer,
                                              uint32_t& size) {
  if (const auto error = m_context.Error("GetAdaptersAddresses")) return *error;
  const std::vector<Adapter> adapters = PresentAdapters(m_adapters, m_modem.Description());
  size_t needed = 0;
  for (const Adapter& adapter : adapters) needed += LayoutOf(adapter).Size();
  if (adapters.empty()) return 232;  // ERROR_NO_DATA
  const uint32_t room = size;
  size = static_cast<uint32_t>(needed);
  if (buffer == nullptr || room < needed) return platform::kErrorBufferOverflow;
  auto* at = static_cast<std::byte*>(buffer);
  for (size_t i = 0; i < adapters.size(); ++i) {
    const AdapterLayout layout = LayoutOf(adapters[i]);
    const AdapterLayout::Texts texts = layout.WriteTexts(at);
    std::byte* const next = at + layout.Size();
    new (at) platform::AdapterRecord{.Next = i + 1 == adapters.size() ? nullptr : next,
                                     .AdapterName = texts.name,
                                     .Description = texts.description,
                                     .FriendlyName = texts.friendly_name,
                                     .IfType = adapters[i].if_type,
                                     .OperStatus = adapters[i].oper_status};
    at = next;
  }
  return platform::kErrorSuccess;
}

platform::AdapterRecord VirtualNetwork::ReadAdapter(const void* record) {
  return *static_cast<const platform::AdapterRecord*>(record);
}

platform::KeyHandle VirtualNetwork::SetupDiOpenClassRegKeyExW(const platform::Guid& device_class,
                                                              uint32_t /*access*/,
                                                              uint32_t /*flags*/) {
  const auto invalid = platform::InvalidHandle<platform::KeyHandle>();
  if (m_context.Fails("SetupDiOpenClassRegKeyExW")) return invalid;
  if (device_class != platform::kGuidDevClassNet) {
    Context::SetLastError(0xE0000206);  // ERROR_INVALID_CLASS
    return invalid;
  }
  return m_registry.Open(kNetworkClassKey);
}

}  // namespace nuvelta::virtual_notebook
