// What the system's tables of devices and network adapters hold, on whichever stage.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "notebook/model/scenario.h"

namespace nuvelta::virtual_notebook {

// The hardware-id property of a device that has one.
std::vector<uint8_t> HardwareIdBytes(const Device& device);

Adapter ModemAdapter(const ModemDescription& modem);
// The notebook's adapters, and the modem's among them while it is there; devices alike.
std::vector<Adapter> PresentAdapters(std::vector<Adapter> adapters, const ModemDescription& modem);
std::vector<Device> PresentDevices(std::vector<Device> devices, const ModemDescription& modem);

// The network class key below HKEY_LOCAL_MACHINE. Beside "Configuration" it has a subkey
// for each adapter, from "0000" on.
inline constexpr const char* kNetworkClassKey =
    "SYSTEM\\CurrentControlSet\\Control\\Class\\{4D36E972-E325-11CE-BFC1-08002BE10318}";
// The names and texts of the values of an adapter's subkey.
std::vector<std::pair<std::string, std::string>> ClassKeyTexts(const Adapter& adapter);

// A record of GetAdaptersAddresses with its texts behind it, as it lies in the caller's
// buffer.
class AdapterLayout {
 public:
  // `name` is the adapter's in the ANSI code page.
  AdapterLayout(const Adapter& adapter, std::string name, size_t record_size, size_t alignment);

  size_t Size() const;

  // Where the texts are.
  struct Texts {
    char* name;
    char16_t* description;
    char16_t* friendly_name;
  };
  // Writes the texts of the record at `at`.
  Texts WriteTexts(std::byte* at) const;

 private:
  const std::string m_name;
  const std::u16string m_description;
  const std::u16string m_friendly_name;
  const size_t m_record_size;
  const size_t m_alignment;
};

}  // namespace nuvelta::virtual_notebook
