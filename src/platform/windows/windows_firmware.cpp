#include "platform/firmware.h"
#include "platform/windows/win32.h"
#include "platform/windows/windows_platform.h"

namespace nuvelta::windows {

namespace {

class Win32Firmware final : public platform::Firmware {
 public:
  uint32_t GetSystemFirmwareTable(uint32_t provider, uint32_t table, std::byte* buffer,
                                  uint32_t size) override {
    return ::GetSystemFirmwareTable(provider, table, buffer, size);
  }
};

}  // namespace

platform::Firmware& WindowsFirmware() { return Immortal<Win32Firmware>(); }

}  // namespace nuvelta::windows
