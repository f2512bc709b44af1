#include "platform/network.h"
#include "platform/windows/win32.h"
#include "platform/windows/windows_platform.h"

#include <winsock2.h>

#include <iphlpapi.h>
#include <setupapi.h>

namespace nuvelta::windows {

namespace {

class Win32NetworkAdapters final : public platform::NetworkAdapters {
 public:
  uint32_t GetAdaptersAddresses(uint32_t family, uint32_t flags, void* buffer,
                                uint32_t& size) override {
    ULONG bytes = size;
    const ULONG result = ::GetAdaptersAddresses(family, flags, nullptr,
                                                static_cast<IP_ADAPTER_ADDRESSES*>(buffer), &bytes);
    size = bytes;
    return result;
  }

  platform::AdapterRecord ReadAdapter(const void* record) override {
    const auto& adapter = *static_cast<const IP_ADAPTER_ADDRESSES*>(record);
    return {.Next = adapter.Next,
            .AdapterName = adapter.AdapterName,
            .Description = Utf16Chars(adapter.Description),
            .FriendlyName = Utf16Chars(adapter.FriendlyName),
            .IfType = adapter.IfType,
            .OperStatus = static_cast<uint32_t>(adapter.OperStatus)};
  }

  platform::KeyHandle SetupDiOpenClassRegKeyExW(const platform::Guid& device_class, uint32_t access,
                                                uint32_t flags) override {
    const GUID id = ToGuid(device_class);
    return FromNative<platform::KeyHandle>(
        ::SetupDiOpenClassRegKeyExW(&id, access, flags, nullptr, nullptr));
  }
};

}  // namespace

platform::NetworkAdapters& WindowsNetworkAdapters() { return Immortal<Win32NetworkAdapters>(); }

}  // namespace nuvelta::windows
