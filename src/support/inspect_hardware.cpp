#include <algorithm>
#include <array>
#include <cstdio>
#include <new>
#include <span>

#include "common/scope_exit.h"
#include "common/text_util.h"
#include "modem/device_helper.h"
#include "modem/projected.h"
#include "platform/devices.h"
#include "platform/memory.h"
#include "platform/network.h"
#include "platform/platform.h"
#include "platform/registry.h"
#include "platform/threads.h"
#include "platform/vendor_service.h"
#include "support/inspections.h"
#include "support/wide_text.h"

namespace nuvelta::support {

namespace {

constexpr size_t kTextSize = 256;
constexpr size_t kPropertySize = 512;          // characters
constexpr uint32_t kMemoryError = 0x8007000E;  // E_OUTOFMEMORY

uint32_t LastError() { return platform::Os().threads->GetLastError(); }

std::string TextOrNothing(const char16_t* text) {
  return text == nullptr ? std::string() : Utf8Of(text);
}

// As the service asks for them.
void ListAdapters(AdapterListFacts& facts) {
  platform::NetworkAdapters& network = *platform::Os().network;
  platform::Memory& memory = *platform::Os().memory;
  uint32_t size = 0;
  network.GetAdaptersAddresses(platform::kAfUnspec, 0, nullptr, size);
  void* const buffer = memory.HeapAlloc(size);
  if (buffer == nullptr) {
    facts.error = platform::kErrorNotEnoughMemory;
    return;
  }
  const ScopeExit free([&] { memory.HeapFree(buffer); });
  facts.error = network.GetAdaptersAddresses(platform::kAfInet, platform::kGaaFlagSkipMulticast,
                                             buffer, size);
  if (facts.error != platform::kErrorSuccess) return;
  bool examined = false;
  for (const void* record = buffer; record != nullptr;) {
    const platform::AdapterRecord adapter = network.ReadAdapter(record);
    const bool first = !examined && adapter.IfType == platform::kIfTypeWwanPp;
    examined = examined || first;
    facts.adapters.push_back({.name = adapter.AdapterName == nullptr ? "" : adapter.AdapterName,
                              .description = TextOrNothing(adapter.Description),
                              .friendly_name = TextOrNothing(adapter.FriendlyName),
                              .type = adapter.IfType,
                              .state = adapter.OperStatus,
                              .examined = first});
    record = adapter.Next;
  }
}

std::optional<std::string> TextValue(platform::KeyHandle key, std::string_view value) {
  std::array<char, kTextSize> text{};
  auto size = static_cast<uint32_t>(text.size());
  if (platform::Os().registry->RegQueryValueExA(
          key, value, reinterpret_cast<std::byte*>(text.data()), size) != platform::kErrorSuccess) {
    return std::nullopt;
  }
  return std::string(FirstText(std::span(text).first(std::min<size_t>(size, text.size()))));
}

// The adapter's entry below the class key. One without a device instance id is told too,
// when no other is found.
void FindClassEntry(const std::string& adapter, AdapterListFacts& facts) {
  platform::Registry& registry = *platform::Os().registry;
  const platform::KeyHandle class_key = platform::Os().network->SetupDiOpenClassRegKeyExW(
      platform::kGuidDevClassNet, platform::kKeyRead, platform::kDiocrInstaller);
  if (class_key == platform::InvalidHandle<platform::KeyHandle>()) {
    facts.class_error = LastError();
    return;
  }
  const ScopeExit close([&] { registry.RegCloseKey(class_key); });
  for (uint32_t index = 0; facts.instance_id.empty(); ++index) {
    std::array<char, kTextSize> subkey{};
    const uint32_t error = registry.RegEnumKeyExA(class_key, index, subkey);
    if (error != platform::kErrorSuccess) {
      if (error != platform::kErrorNoMoreItems) facts.class_error = error;
      return;
    }
    platform::KeyHandle key{};
    const std::string name(FirstText(subkey));
    if (registry.RegOpenKeyExA(class_key, name, platform::kKeyRead, key) !=
        platform::kErrorSuccess) {
      continue;
    }
    const ScopeExit close_entry([&] { registry.RegCloseKey(key); });
    const auto net_cfg = TextValue(key, "NetCfgInstanceId");
    if (!net_cfg || net_cfg->find(adapter) == std::string::npos) continue;
    facts.subkey = name;
    const auto id = TextValue(key, "DeviceInstanceID");
    if (!id) continue;
    facts.instance_id = *id;
    return;
  }
}

std::string GuidText(const platform::Guid& id) {
  std::array<char, 40> text{};
  const auto& tail = id.Data4;
  std::snprintf(text.data(), text.size(), "{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}",
                static_cast<unsigned>(id.Data1), unsigned{id.Data2}, unsigned{id.Data3},
                unsigned{tail[0]}, unsigned{tail[1]}, unsigned{tail[2]}, unsigned{tail[3]},
                unsigned{tail[4]}, unsigned{tail[5]}, unsigned{tail[6]}, unsigned{tail[7]});
  return text.data();
}

void ListServices(ModemFacts& facts) {
  facts.failed_call = "MobileBroadbandModem::GetDefault";
  const auto modem = platform::Os().mobile_broadband->GetDefault();
  facts.present = modem != nullptr;
  if (facts.present) {
    facts.failed_call = "Modem::DeviceServices";
    const auto services = NotNull(modem->DeviceServices());
    const uint32_t size = services->Size();
    for (uint32_t index = 0; index < size; ++index) {
      const platform::Guid id = NotNull(services->GetAt(index))->DeviceServiceId();
      facts.services.push_back(GuidText(id));
      facts.vendor_service = facts.vendor_service || id == platform::kVendorService;
    }
  }
  facts.failed_call.clear();
}

}  // namespace

AdapterListFacts InspectAdapters() {
  AdapterListFacts facts;
  ListAdapters(facts);
  const auto examined = std::ranges::find(facts.adapters, true, &AdapterFacts::examined);
  if (examined == facts.adapters.end()) return facts;
  FindClassEntry(examined->name, facts);
  facts.compared = CutMbimHwid(facts.instance_id);
  facts.expected = !facts.instance_id.empty() && IsExpectedMbimHwid(facts.compared);
  return facts;
}

DeviceListFacts InspectDevices() {
  DeviceListFacts facts;
  platform::Devices& devices = *platform::Os().devices;
  const platform::DeviceSetHandle set =
      devices.SetupDiGetClassDevsW(platform::kDigcfPresent | platform::kDigcfAllClasses);
  if (set == platform::InvalidHandle<platform::DeviceSetHandle>()) {
    facts.error = LastError();
    return facts;
  }
  const ScopeExit destroy([&] { devices.SetupDiDestroyDeviceInfoList(set); });
  platform::DeviceInfoData device;
  for (; devices.SetupDiEnumDeviceInfo(set, facts.devices, device); ++facts.devices) {
    std::array<char16_t, kPropertySize> property{};
    if (!devices.SetupDiGetDeviceRegistryPropertyW(set, device, platform::kSpdrpHardwareId,
                                                   std::as_writable_bytes(std::span(property)))) {
      continue;
    }
    const std::u16string_view all(property.data(), property.size());
    const std::string id = ToAnsi(all.substr(0, all.find(u'\0')));
    const HwidOwner owner = ClassifyHwid(id);
    if (owner == HwidOwner::kOther) continue;
    facts.marked.push_back({.number = facts.devices, .hardware_id = id, .owner = owner});
  }
  const uint32_t end = LastError();
  if (end != platform::kErrorNoMoreItems) facts.error = end;
  std::array<char, 128> id{};
  if (!CDeviceHelper::GetAuthDeviceHwid(id)) return facts;
  facts.id = id.data();
  // The first PCI device decides, else the last one.
  auto decides = std::ranges::find(facts.marked, HwidOwner::kMakerPci, &DeviceFacts::owner);
  if (decides == facts.marked.end() && !facts.marked.empty()) --decides;
  if (decides != facts.marked.end()) decides->decides = true;
  return facts;
}

ModemFacts InspectModem() {
  ModemFacts facts;
  try {
    ListServices(facts);
  } catch (const platform::HresultError& error) {
    facts.error = error.code;
  } catch (const std::bad_alloc&) {
    facts.error = kMemoryError;
  }
  return facts;
}

}  // namespace nuvelta::support
