#include "notebook/model/device_tables.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "notebook/model/unicode.h"
#include "platform/network.h"

namespace nuvelta::virtual_notebook {

namespace {

template <class Entry>
void InsertAt(std::vector<Entry>& entries, std::optional<uint32_t> place, Entry entry) {
  const size_t at = std::min<size_t>(place.value_or(entries.size()), entries.size());
  entries.insert(entries.begin() + static_cast<std::ptrdiff_t>(at), std::move(entry));
}

}  // namespace

std::vector<uint8_t> HardwareIdBytes(const Device& device) {
  return device.raw_hardware_id ? *device.raw_hardware_id : Utf16Bytes(device.hardware_id, 2);
}

Adapter ModemAdapter(const ModemDescription& modem) {
  return {.name = modem.adapter_name,
          .description = modem.description,
          .friendly_name = modem.friendly_name,
          .if_type = platform::kIfTypeWwanPp,
          .oper_status = modem.oper_status,
          .instance_id = modem.instance_id};
}

std::vector<Adapter> PresentAdapters(std::vector<Adapter> adapters, const ModemDescription& modem) {
  if (modem.present) InsertAt(adapters, modem.adapter_place, ModemAdapter(modem));
  return adapters;
}

std::vector<Device> PresentDevices(std::vector<Device> devices, const ModemDescription& modem) {
  if (modem.present)
    InsertAt(devices, modem.device_place, Device{.hardware_id = modem.hardware_id});
  return devices;
}

std::vector<std::pair<std::string, std::string>> ClassKeyTexts(const Adapter& adapter) {
  std::vector<std::pair<std::string, std::string>> texts{{"NetCfgInstanceId", adapter.name},
                                                         {"DriverDesc", adapter.description}};
  if (adapter.instance_id) texts.emplace_back("DeviceInstanceID", *adapter.instance_id);
  return texts;
}

AdapterLayout::AdapterLayout(const Adapter& adapter, std::string name, size_t record_size,
                             size_t alignment)
    : m_name(std::move(name)),
      m_description(Utf16(adapter.description)),
      m_friendly_name(Utf16(adapter.friendly_name)),
      m_record_size(record_size),
      m_alignment(alignment) {}

size_t AdapterLayout::Size() const {
  const size_t size = m_record_size +
                      (m_description.size() + 1 + m_friendly_name.size() + 1) * sizeof(char16_t) +
                      m_name.size() + 1;
  return (size + m_alignment - 1) / m_alignment * m_alignment;
}

AdapterLayout::Texts AdapterLayout::WriteTexts(std::byte* at) const {
  auto* const description = reinterpret_cast<char16_t*>(at + m_record_size);
  char16_t* const friendly_name = description + m_description.size() + 1;
  char* const name = reinterpret_cast<char*>(friendly_name + m_friendly_name.size() + 1);
  std::memcpy(description, m_description.c_str(), (m_description.size() + 1) * sizeof(char16_t));
  std::memcpy(friendly_name, m_friendly_name.c_str(),
              (m_friendly_name.size() + 1) * sizeof(char16_t));
  std::memcpy(name, m_name.c_str(), m_name.size() + 1);
  return {.name = name, .description = description, .friendly_name = friendly_name};
}

}  // namespace nuvelta::virtual_notebook
