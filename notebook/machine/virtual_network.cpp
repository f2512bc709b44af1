#include "notebook/machine/virtual_network.h"

#include <cstdio>
#include <cstring>
#include <new>

#include "notebook/machine/code_page.h"
#include "notebook/model/unicode.h"

namespace nuvelta::virtual_notebook {

namespace {

constexpr const char* kClassKey =
    "SYSTEM\\CurrentControlSet\\Control\\Class\\{4D36E972-E325-11CE-BFC1-08002BE10318}";
constexpr size_t kAlignment = alignof(platform::AdapterRecord);

size_t Aligned(size_t size) { return (size + kAlignment - 1) / kAlignment * kAlignment; }

Adapter ModemAdapter(const ModemDescription& modem) {
  return {.name = modem.adapter_name,
          .description = modem.description,
          .friendly_name = modem.friendly_name,
          .if_type = platform::kIfTypeWwanPp,
          .oper_status = modem.oper_status,
          .instance_id = modem.instance_id,
          .in_class_key = true};
}

// A record and its three texts, as they lie in the caller's buffer.
struct Layout {
  std::string name;
  std::u16string description;
  std::u16string friendly_name;

  explicit Layout(const Adapter& adapter)
      : name(ToCodePage(Utf16(adapter.name))),
        description(Utf16(adapter.description)),
        friendly_name(Utf16(adapter.friendly_name)) {}

  size_t Size() const {
    return Aligned(sizeof(platform::AdapterRecord) +
                   (description.size() + 1 + friendly_name.size() + 1) * sizeof(char16_t) +
                   name.size() + 1);
  }

  void Write(char* at, const Adapter& adapter, bool last) const {
    auto* wide = reinterpret_cast<char16_t*>(at + sizeof(platform::AdapterRecord));
    char16_t* friendly = wide + description.size() + 1;
    char* narrow = reinterpret_cast<char*>(friendly + friendly_name.size() + 1);
    std::memcpy(wide, description.c_str(), (description.size() + 1) * sizeof(char16_t));
    std::memcpy(friendly, friendly_name.c_str(), (friendly_name.size() + 1) * sizeof(char16_t));
    std::memcpy(narrow, name.c_str(), name.size() + 1);
    new (at) platform::AdapterRecord{.Next = last ? nullptr : at + Size(),
                                     .AdapterName = narrow,
                                     .Description = wide,
                                     .FriendlyName = friendly,
                                     .IfType = adapter.if_type,
                                     .OperStatus = adapter.oper_status};
  }
};

}  // namespace

VirtualNetwork::VirtualNetwork(Context& context, VirtualRegistry& registry, const ModemModel& modem,
                               std::vector<Adapter> adapters)
    : m_context(context), m_registry(registry), m_modem(modem), m_adapters(std::move(adapters)) {
  m_registry.CreateKey(std::string(kClassKey) + "\\Configuration");
  for (const Adapter& adapter : m_adapters) AddToClassKey(adapter);
  if (m_modem.Description().present) InstallModem();
}

void VirtualNetwork::AddToClassKey(const Adapter& adapter) {
  if (!adapter.in_class_key) return;
  char number[16];
  std::snprintf(number, sizeof number, "%04u", m_next_subkey++);
  const std::string path = std::string(kClassKey) + "\\" + number;
  m_registry.SetText(path, "NetCfgInstanceId", adapter.name);
  m_registry.SetText(path, "DriverDesc", adapter.description);
  if (adapter.instance_id) m_registry.SetText(path, "DeviceInstanceID", *adapter.instance_id);
}

void VirtualNetwork::InstallModem() {
  if (m_modem_installed) return;
  m_modem_installed = true;
  AddToClassKey(ModemAdapter(m_modem.Description()));
}

std::vector<Adapter> VirtualNetwork::Present() const {
  std::vector<Adapter> adapters = m_adapters;
  const ModemDescription modem = m_modem.Description();
  if (modem.present) adapters.push_back(ModemAdapter(modem));
  return adapters;
}

uint32_t VirtualNetwork::GetAdaptersAddresses(uint32_t /*family*/, uint32_t /*flags*/, void* buffer,
                                              uint32_t& size) {
  if (const auto error = m_context.Error("GetAdaptersAddresses")) return *error;
  const std::vector<Adapter> adapters = Present();
  size_t needed = 0;
  for (const Adapter& adapter : adapters) needed += Layout(adapter).Size();
  if (adapters.empty()) return 232;  // ERROR_NO_DATA
  const uint32_t room = size;
  size = static_cast<uint32_t>(needed);
  if (buffer == nullptr || room < needed) return platform::kErrorBufferOverflow;
  char* at = static_cast<char*>(buffer);
  for (size_t i = 0; i < adapters.size(); ++i) {
    const Layout layout(adapters[i]);
    layout.Write(at, adapters[i], i + 1 == adapters.size());
    at += layout.Size();
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
  return m_registry.Open(kClassKey);
}

}  // namespace nuvelta::virtual_notebook
