#include <algorithm>
#include <array>
#include <span>

#include "common/scope_exit.h"
#include "modem/hardware_id.h"
#include "platform/devices.h"
#include "platform/network.h"
#include "platform/platform.h"
#include "platform/registry.h"
#include "platform/threads.h"
#include "support/capture/read_notebook.h"
#include "support/wide_text.h"

namespace nuvelta::support {

namespace {

constexpr size_t kTextSize = 256;  // as the service reads them
constexpr size_t kMostProperty = 65'536;

uint32_t LastErrorOfHardware() { return platform::Os().threads->GetLastError(); }

void ListAdapters(CapturedNotebook& notebook) {
  platform::NetworkAdapters& network = *platform::Os().network;
  uint32_t size = 0;
  std::vector<std::byte> buffer;
  uint32_t error = platform::kErrorBufferOverflow;
  for (int attempt = 0; error == platform::kErrorBufferOverflow && attempt < 5; ++attempt) {
    buffer.resize(size);
    error = network.GetAdaptersAddresses(platform::kAfInet, platform::kGaaFlagSkipMulticast,
                                         buffer.empty() ? nullptr : buffer.data(), size);
  }
  constexpr uint32_t kNoData = 232;  // ERROR_NO_DATA: there is none
  if (error == kNoData) return;
  if (error != platform::kErrorSuccess) return NoteError(notebook, "the network adapters", error);
  for (const void* record = buffer.data(); record != nullptr;) {
    const platform::AdapterRecord adapter = network.ReadAdapter(record);
    const auto text = [](const char16_t* wide) { return wide == nullptr ? "" : Utf8Of(wide); };
    notebook.adapters.push_back(
        {.name = adapter.AdapterName == nullptr ? "" : Utf8OfAnsi(adapter.AdapterName),
         .description = text(adapter.Description),
         .friendly_name = text(adapter.FriendlyName),
         .type = adapter.IfType,
         .state = adapter.OperStatus});
    record = adapter.Next;
  }
}

std::optional<std::string> ClassText(platform::KeyHandle key, std::string_view value) {
  std::array<char, kTextSize> text{};
  auto size = static_cast<uint32_t>(text.size());
  if (platform::Os().registry->RegQueryValueExA(
          key, value, reinterpret_cast<std::byte*>(text.data()), size) != platform::kErrorSuccess) {
    return std::nullopt;
  }
  return Utf8OfAnsi(FirstText(std::span(text).first(std::min<size_t>(size, text.size()))));
}

// An entry of the class key belongs to the adapters whose name it contains; the first one
// with an instance id counts.
void TakeClassEntry(platform::KeyHandle key, CapturedNotebook& notebook) {
  const auto net_cfg = ClassText(key, "NetCfgInstanceId");
  if (!net_cfg) return;
  for (CapturedAdapter& adapter : notebook.adapters) {
    if (adapter.instance_id || net_cfg->find(adapter.name) == std::string::npos) continue;
    adapter.in_class_key = true;
    adapter.instance_id = ClassText(key, "DeviceInstanceID");
  }
}

void ReadClassKey(CapturedNotebook& notebook) {
  platform::Registry& registry = *platform::Os().registry;
  const platform::KeyHandle class_key = platform::Os().network->SetupDiOpenClassRegKeyExW(
      platform::kGuidDevClassNet, platform::kKeyRead, platform::kDiocrInstaller);
  if (class_key == platform::InvalidHandle<platform::KeyHandle>()) {
    return NoteError(notebook, "the class key of the network adapters", LastErrorOfHardware());
  }
  const ScopeExit close([&] { registry.RegCloseKey(class_key); });
  for (uint32_t index = 0;; ++index) {
    std::array<char, kTextSize> subkey{};
    if (registry.RegEnumKeyExA(class_key, index, subkey) != platform::kErrorSuccess) return;
    platform::KeyHandle key{};
    if (registry.RegOpenKeyExA(class_key, FirstText(subkey), platform::kKeyRead, key) !=
        platform::kErrorSuccess) {
      continue;
    }
    const ScopeExit close_entry([&] { registry.RegCloseKey(key); });
    TakeClassEntry(key, notebook);
  }
}

// The call does not tell how much it has written: what two different fillings leave is it.
std::optional<Bytes> HardwareIds(platform::DeviceSetHandle set, platform::DeviceInfoData& device) {
  std::array<Bytes, 2> read{Bytes(kMostProperty, 0x55), Bytes(kMostProperty, 0xAA)};
  for (Bytes& bytes : read) {
    if (!platform::Os().devices->SetupDiGetDeviceRegistryPropertyW(
            set, device, platform::kSpdrpHardwareId, std::as_writable_bytes(std::span(bytes)))) {
      return std::nullopt;
    }
  }
  size_t length = read[0].size();
  while (length > 0 && read[0][length - 1] == 0x55 && read[1][length - 1] == 0xAA) --length;
  read[0].resize(length);
  return read[0];
}

void ListDevices(CapturedNotebook& notebook) {
  platform::Devices& devices = *platform::Os().devices;
  const platform::DeviceSetHandle set =
      devices.SetupDiGetClassDevsW(platform::kDigcfPresent | platform::kDigcfAllClasses);
  if (set == platform::InvalidHandle<platform::DeviceSetHandle>()) {
    return NoteError(notebook, "the devices", LastErrorOfHardware());
  }
  const ScopeExit destroy([&] { devices.SetupDiDestroyDeviceInfoList(set); });
  for (uint32_t index = 0;; ++index) {
    platform::DeviceInfoData device;
    if (!devices.SetupDiEnumDeviceInfo(set, index, device)) break;
    notebook.devices.push_back(HardwareIds(set, device));
  }
  const uint32_t end = LastErrorOfHardware();
  if (end != platform::kErrorNoMoreItems) NoteError(notebook, "all of the devices", end);
}

}  // namespace

void ReadHardware(CapturedNotebook& notebook) {
  ListAdapters(notebook);
  ReadClassKey(notebook);
  ListDevices(notebook);
}

}  // namespace nuvelta::support
