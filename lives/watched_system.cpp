#include "lives/watched_system.h"

#include <string>

namespace nuvelta::explore {

using platform::AdapterRecord;
using platform::kErrorSuccess;
using platform::KeyHandle;

uint32_t WatchedNetwork::GetAdaptersAddresses(uint32_t family, uint32_t flags, void* buffer,
                                              uint32_t& size) {
  const uint32_t error = m_inner.GetAdaptersAddresses(family, flags, buffer, size);
  if (RunAnswers* const run = m_ear.Run()) {
    run->memory_for = RunAnswers::MemoryFor::kAdapters;
    run->adapters_read = buffer != nullptr && error == kErrorSuccess;
  }
  return error;
}

AdapterRecord WatchedNetwork::ReadAdapter(const void* record) {
  const AdapterRecord adapter = m_inner.ReadAdapter(record);
  RunAnswers* const run = m_ear.Run();
  if (run != nullptr && !run->adapter && adapter.IfType == platform::kIfTypeWwanPp) {
    run->adapter = adapter.AdapterName == nullptr ? "" : adapter.AdapterName;
  }
  return adapter;
}

KeyHandle WatchedNetwork::SetupDiOpenClassRegKeyExW(const platform::Guid& device_class,
                                                    uint32_t access, uint32_t flags) {
  return m_inner.SetupDiOpenClassRegKeyExW(device_class, access, flags);
}

uint32_t WatchedRegistry::RegOpenKeyExW(std::u16string_view subkey, uint32_t access,
                                        KeyHandle& key) {
  return m_inner.RegOpenKeyExW(subkey, access, key);
}

uint32_t WatchedRegistry::RegOpenKeyExA(KeyHandle parent, std::string_view subkey, uint32_t access,
                                        KeyHandle& key) {
  const uint32_t error = m_inner.RegOpenKeyExA(parent, subkey, access, key);
  RunAnswers* const run = m_ear.Run();
  if (run != nullptr && error == kErrorSuccess) run->adapter_keys.emplace_back();
  return error;
}

uint32_t WatchedRegistry::RegQueryValueExW(KeyHandle key, std::u16string_view value, uint32_t& type,
                                           std::byte* data, uint32_t& size) {
  const uint32_t error = m_inner.RegQueryValueExW(key, value, type, data, size);
  RunAnswers* const run = m_ear.Run();
  if (run == nullptr) return error;
  run->memory_for = RunAnswers::MemoryFor::kOther;
  const bool usable =
      error == kErrorSuccess && data != nullptr && type == platform::kRegDword && size != 0;
  if (!usable) return error;
  if (value == u"SupportVerifyPlatform") run->support_verify = static_cast<uint8_t>(data[0]);
  if (value == u"IsDisableVerify") run->disable_verify = static_cast<uint8_t>(data[0]);
  return error;
}

uint32_t WatchedRegistry::RegQueryValueExA(KeyHandle key, std::string_view value, std::byte* data,
                                           uint32_t& size) {
  const uint32_t error = m_inner.RegQueryValueExA(key, value, data, size);
  RunAnswers* const run = m_ear.Run();
  if (run == nullptr || error != kErrorSuccess || run->adapter_keys.empty()) return error;
  std::string text(reinterpret_cast<const char*>(data), size);
  text = text.substr(0, text.find('\0'));
  if (value == "NetCfgInstanceId") run->adapter_keys.back().adapter = text;
  if (value == "DeviceInstanceID") run->adapter_keys.back().device = text;
  return error;
}

uint32_t WatchedRegistry::RegEnumKeyExA(KeyHandle key, uint32_t index, std::span<char> name) {
  return m_inner.RegEnumKeyExA(key, index, name);
}

uint32_t WatchedRegistry::RegCloseKey(KeyHandle key) noexcept { return m_inner.RegCloseKey(key); }

platform::DeviceSetHandle WatchedDevices::SetupDiGetClassDevsW(uint32_t flags) {
  const platform::DeviceSetHandle set = m_inner.SetupDiGetClassDevsW(flags);
  if (RunAnswers* const run = m_ear.Run()) {
    run->devices_read = set != platform::InvalidHandle<platform::DeviceSetHandle>();
  }
  return set;
}

bool WatchedDevices::SetupDiEnumDeviceInfo(platform::DeviceSetHandle set, uint32_t index,
                                           platform::DeviceInfoData& device) {
  const bool found = m_inner.SetupDiEnumDeviceInfo(set, index, device);
  if (RunAnswers* const run = m_ear.Run()) run->text_for = RunAnswers::TextFor::kOther;
  return found;
}

bool WatchedDevices::SetupDiGetDeviceRegistryPropertyW(platform::DeviceSetHandle set,
                                                       platform::DeviceInfoData& device,
                                                       uint32_t property,
                                                       std::span<std::byte> buffer) {
  const bool read = m_inner.SetupDiGetDeviceRegistryPropertyW(set, device, property, buffer);
  RunAnswers* const run = m_ear.Run();
  if (run == nullptr || !read) return read;
  run->device_ids.emplace_back();
  run->text_for = RunAnswers::TextFor::kDevice;
  return read;
}

bool WatchedDevices::SetupDiDestroyDeviceInfoList(platform::DeviceSetHandle set) noexcept {
  return m_inner.SetupDiDestroyDeviceInfoList(set);
}

uint32_t WatchedFirmware::GetSystemFirmwareTable(uint32_t provider, uint32_t table,
                                                 std::byte* buffer, uint32_t size) {
  const uint32_t answer = m_inner.GetSystemFirmwareTable(provider, table, buffer, size);
  RunAnswers* const run = m_ear.Run();
  if (run == nullptr) return answer;
  if (buffer == nullptr) {
    run->firmware.push_back({.size = answer});
    run->memory_for = RunAnswers::MemoryFor::kFirmware;
  } else if (!run->firmware.empty()) {
    run->firmware.back().written = answer;
  }
  return answer;
}

void* WatchedMemory::HeapAlloc(size_t bytes) {
  void* const block = m_inner.HeapAlloc(bytes);
  RunAnswers* const run = m_ear.Run();
  if (run == nullptr || block == nullptr) return block;
  if (run->memory_for == RunAnswers::MemoryFor::kAdapters) run->adapter_memory = true;
  if (run->memory_for == RunAnswers::MemoryFor::kFirmware) run->firmware.back().memory = true;
  return block;
}

int WatchedText::WideCharToMultiByte(std::u16string_view wide, std::span<char> out) {
  const int written = m_inner.WideCharToMultiByte(wide, out);
  RunAnswers* const run = m_ear.Run();
  if (run == nullptr || out.empty() || written <= 0) return written;
  if (run->text_for == RunAnswers::TextFor::kDevice) {
    run->device_ids.back().assign(out.data(), static_cast<size_t>(written));
  }
  if (run->text_for == RunAnswers::TextFor::kVendorService && !run->visits.empty()) {
    run->visits.back().vendor_listed = true;
  }
  return written;
}

WatchedSystem::WatchedSystem(const platform::Platform& inner, const RunEar& ear)
    : network(*inner.network, ear),
      registry(*inner.registry, ear),
      devices(*inner.devices, ear),
      firmware(*inner.firmware, ear),
      memory(*inner.memory, ear),
      text(*inner.text, ear) {}

void WatchedSystem::PutInto(platform::Platform& platform) {
  platform.network = &network;
  platform.registry = &registry;
  platform.devices = &devices;
  platform.firmware = &firmware;
  platform.memory = &memory;
  platform.text = &text;
}

}  // namespace nuvelta::explore
