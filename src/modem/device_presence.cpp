#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <string>

#include "common/func_trace.h"
#include "common/logger.h"
#include "common/scope_exit.h"
#include "common/text_util.h"
#include "modem/device_helper.h"
#include "modem/hardware_id.h"
#include "platform/memory.h"
#include "platform/network.h"
#include "platform/platform.h"
#include "platform/registry.h"

namespace nuvelta {

namespace {

constexpr const char* kIsModemThere = "CDeviceHelper::IsNuveltaMBIMDevcieExist";
constexpr size_t kAdapterNameSize = 256;
constexpr size_t kRegistryTextSize = 256;
constexpr size_t kInstanceIdSize = 128;

std::string KeepAdapter(const platform::AdapterRecord& adapter) {
  const std::string name = adapter.AdapterName == nullptr ? "" : adapter.AdapterName;
  LogInfo(kIsModemThere, "Adapters Info: adapter name = %s, adapter desc = %s, friend name=%s",
          name.c_str(), ToAnsi(adapter.Description).c_str(), ToAnsi(adapter.FriendlyName).c_str());
  // [fixed] only logged: an adapter that is down is accepted too.
  LogInfo(kIsModemThere,
          "mbim oper status = %d"
          " (1 IfOperStatusUp ; 2 IfOperStatusDown ; 3 IfOperStatusTesting ; "
          "4 IfOperStatusUnknown ; 5 IfOperStatusDormant ; 6 IfOperStatusNotPresent ;"
          "7 IfOperStatusLowerLayerDown)",
          static_cast<int>(adapter.OperStatus));
  return name.substr(0, kAdapterNameSize - 1);
}

// The name of the first mobile-broadband adapter.
std::optional<std::string> FindMobileBroadbandAdapter(void* buffer, uint32_t size) {
  platform::NetworkAdapters& network = *platform::Os().network;
  // [fixed] another family than the one that the size was asked for.
  if (network.GetAdaptersAddresses(platform::kAfInet, platform::kGaaFlagSkipMulticast, buffer,
                                   size) != platform::kErrorSuccess) {
    return std::nullopt;
  }
  for (const void* record = buffer; record != nullptr;) {
    const platform::AdapterRecord adapter = network.ReadAdapter(record);
    if (adapter.IfType == platform::kIfTypeWwanPp) return KeepAdapter(adapter);
    record = adapter.Next;
  }
  return std::nullopt;
}

std::optional<std::string> ReadText(platform::KeyHandle key, std::string_view value) {
  std::array<char, kRegistryTextSize> text{};
  auto size = static_cast<uint32_t>(text.size());
  if (platform::Os().registry->RegQueryValueExA(
          key, value, reinterpret_cast<std::byte*>(text.data()), size) != platform::kErrorSuccess) {
    return std::nullopt;
  }
  const size_t length = std::min<size_t>(size, text.size());
  return std::string(FirstText(std::span(text).first(length)));
}

std::optional<std::string> ReadInstanceId(platform::KeyHandle class_key, std::string_view subkey,
                                          const std::string& adapter) {
  platform::Registry& registry = *platform::Os().registry;
  platform::KeyHandle key{};
  if (registry.RegOpenKeyExA(class_key, subkey, platform::kKeyRead, key) !=
      platform::kErrorSuccess) {
    return std::nullopt;
  }
  const ScopeExit close([&] { registry.RegCloseKey(key); });
  const std::optional<std::string> net_cfg = ReadText(key, "NetCfgInstanceId");
  if (!net_cfg || net_cfg->find(adapter) == std::string::npos) return std::nullopt;
  return ReadText(key, "DeviceInstanceID");
}

// The device instance id behind an adapter, in the case in which it is stored.
std::optional<std::string> FindInstanceId(const std::string& adapter) {
  platform::Registry& registry = *platform::Os().registry;
  const platform::KeyHandle class_key = platform::Os().network->SetupDiOpenClassRegKeyExW(
      platform::kGuidDevClassNet, platform::kKeyRead, platform::kDiocrInstaller);
  if (class_key == platform::InvalidHandle<platform::KeyHandle>()) return std::nullopt;
  const ScopeExit close([&] { registry.RegCloseKey(class_key); });
  for (uint32_t index = 0;; ++index) {
    std::array<char, kRegistryTextSize> subkey{};
    if (registry.RegEnumKeyExA(class_key, index, subkey) != platform::kErrorSuccess) {
      return std::nullopt;
    }
    std::optional<std::string> id = ReadInstanceId(class_key, FirstText(subkey), adapter);
    if (id) return id->substr(0, kInstanceIdSize - 1);
  }
}

bool IsExpectedDevice(const std::string& instance_id) {
  const std::string hwid(CutMbimHwid(instance_id));
  LogInfo(kIsModemThere, "szMbimHwid = %s", hwid.c_str());
  if (!IsExpectedMbimHwid(hwid)) {
    LogInfo(kIsModemThere, "not find Expected mbim hwid (%s),return", kExpectedMbimHwids);
    return false;
  }
  LogInfo(kIsModemThere, "find MBIM device : %s", hwid.c_str());
  return true;
}

}  // namespace

uint32_t CDeviceHelper::IsNuveltaMBIMDevcieExist(bool& found) {
  const CFuncTrace trace(kIsModemThere);
  std::optional<std::string> adapter;
  {
    platform::Memory& memory = *platform::Os().memory;
    uint32_t size = 0;
    platform::Os().network->GetAdaptersAddresses(platform::kAfUnspec, 0, nullptr, size);
    void* buffer = memory.HeapAlloc(size);
    if (buffer == nullptr) {
      LogError(kIsModemThere, "GetAdaptersAddresses AF_UNSPEC failed");
      return 0;
    }
    const ScopeExit free([&] { memory.HeapFree(buffer); });
    adapter = FindMobileBroadbandAdapter(buffer, size);
  }
  if (!adapter) {
    LogInfo(kIsModemThere, "not get adapter,return ");
    return 0;
  }
  const std::optional<std::string> instance_id = FindInstanceId(*adapter);
  if (instance_id) LogInfo(kIsModemThere, "Get Instance Id %s", instance_id->c_str());
  if (!instance_id || instance_id->empty()) {
    LogInfo(kIsModemThere, "not get hardware id,return");
    return 0;
  }
  if (!IsExpectedDevice(*instance_id)) return 0;
  found = true;
  LogInfo(kIsModemThere, "IsNuveltaMBIMDevcieExist %s find ", kExpectedMbimHwids);
  return 1;
}

}  // namespace nuvelta
