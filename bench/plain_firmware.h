// A firmware table without a notebook around it.
#pragma once

#include <cstdint>
#include <vector>

#include "platform/firmware.h"

namespace nuvelta::bench {

class PlainFirmware final : public platform::Firmware {
 public:
  explicit PlainFirmware(std::vector<uint8_t> table) : m_table(std::move(table)) {}
  uint32_t GetSystemFirmwareTable(uint32_t provider, uint32_t id, std::byte* buffer,
                                  uint32_t size) override;

 private:
  const std::vector<uint8_t> m_table;
};

// A table of 4 KiB: what a notebook has, then memory structures up to the size.
std::vector<uint8_t> FourKilobytes();

// The table behind a 64-bit SMBIOS entry point, as dump tools keep it (DSP0134,
// "SMBIOS 3.0 (64-bit) Entry Point Structure").
std::vector<uint8_t> SmbiosDump(const std::vector<uint8_t>& table);

}  // namespace nuvelta::bench
