// The ports that a run asks for what the machine is, telling a watch of their answers.
#pragma once

#include "lives/watch.h"
#include "platform/devices.h"
#include "platform/firmware.h"
#include "platform/memory.h"
#include "platform/network.h"
#include "platform/platform.h"
#include "platform/registry.h"
#include "platform/text.h"

namespace nuvelta::explore {

// Where the answers go: to the run of the calling thread, while `on`.
struct RunEar {
  Watch& watch;
  const bool& on;

  RunAnswers* Run() const { return on ? watch.runs.AtHand() : nullptr; }
};

class WatchedNetwork final : public platform::NetworkAdapters {
 public:
  WatchedNetwork(platform::NetworkAdapters& inner, const RunEar& ear)
      : m_inner(inner), m_ear(ear) {}

  uint32_t GetAdaptersAddresses(uint32_t family, uint32_t flags, void* buffer,
                                uint32_t& size) override;
  platform::AdapterRecord ReadAdapter(const void* record) override;
  platform::KeyHandle SetupDiOpenClassRegKeyExW(const platform::Guid& device_class, uint32_t access,
                                                uint32_t flags) override;

 private:
  platform::NetworkAdapters& m_inner;
  const RunEar m_ear;
};

class WatchedRegistry final : public platform::Registry {
 public:
  WatchedRegistry(platform::Registry& inner, const RunEar& ear) : m_inner(inner), m_ear(ear) {}

  uint32_t RegOpenKeyExW(std::u16string_view subkey, uint32_t access,
                         platform::KeyHandle& key) override;
  uint32_t RegOpenKeyExA(platform::KeyHandle parent, std::string_view subkey, uint32_t access,
                         platform::KeyHandle& key) override;
  uint32_t RegQueryValueExW(platform::KeyHandle key, std::u16string_view value, uint32_t& type,
                            std::byte* data, uint32_t& size) override;
  uint32_t RegQueryValueExA(platform::KeyHandle key, std::string_view value, std::byte* data,
                            uint32_t& size) override;
  uint32_t RegEnumKeyExA(platform::KeyHandle key, uint32_t index, std::span<char> name) override;
  uint32_t RegCloseKey(platform::KeyHandle key) noexcept override;

 private:
  platform::Registry& m_inner;
  const RunEar m_ear;
};

class WatchedDevices final : public platform::Devices {
 public:
  WatchedDevices(platform::Devices& inner, const RunEar& ear) : m_inner(inner), m_ear(ear) {}

  platform::DeviceSetHandle SetupDiGetClassDevsW(uint32_t flags) override;
  bool SetupDiEnumDeviceInfo(platform::DeviceSetHandle set, uint32_t index,
                             platform::DeviceInfoData& device) override;
  bool SetupDiGetDeviceRegistryPropertyW(platform::DeviceSetHandle set,
                                         platform::DeviceInfoData& device, uint32_t property,
                                         std::span<std::byte> buffer) override;
  bool SetupDiDestroyDeviceInfoList(platform::DeviceSetHandle set) noexcept override;

 private:
  platform::Devices& m_inner;
  const RunEar m_ear;
};

class WatchedFirmware final : public platform::Firmware {
 public:
  WatchedFirmware(platform::Firmware& inner, const RunEar& ear) : m_inner(inner), m_ear(ear) {}

  uint32_t GetSystemFirmwareTable(uint32_t provider, uint32_t table, std::byte* buffer,
                                  uint32_t size) override;

 private:
  platform::Firmware& m_inner;
  const RunEar m_ear;
};

class WatchedMemory final : public platform::Memory {
 public:
  WatchedMemory(platform::Memory& inner, const RunEar& ear) : m_inner(inner), m_ear(ear) {}

  void* HeapAlloc(size_t bytes) override;
  void HeapFree(void* block) noexcept override { m_inner.HeapFree(block); }
  void* LocalAlloc(size_t bytes) override { return m_inner.LocalAlloc(bytes); }
  void LocalFree(void* block) noexcept override { m_inner.LocalFree(block); }

 private:
  platform::Memory& m_inner;
  const RunEar m_ear;
};

class WatchedText final : public platform::Text {
 public:
  WatchedText(platform::Text& inner, const RunEar& ear) : m_inner(inner), m_ear(ear) {}

  int WideCharToMultiByte(std::u16string_view wide, std::span<char> out) override;
  int MultiByteToWideChar(std::string_view narrow, std::span<char16_t> out) override {
    return m_inner.MultiByteToWideChar(narrow, out);
  }

 private:
  platform::Text& m_inner;
  const RunEar m_ear;
};

// All of them, in front of a platform's.
struct WatchedSystem {
  WatchedNetwork network;
  WatchedRegistry registry;
  WatchedDevices devices;
  WatchedFirmware firmware;
  WatchedMemory memory;
  WatchedText text;

  WatchedSystem(const platform::Platform& inner, const RunEar& ear);
  void PutInto(platform::Platform& platform);
};

}  // namespace nuvelta::explore
