#include "plain_firmware.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>
#include <numeric>

#include "notebook/model/smbios_builder.h"

namespace nuvelta::bench {

namespace {

constexpr size_t kHeaderSize = 8;  // of the table as the system hands it out

void PutNumber(uint8_t* at, size_t value, size_t bytes) {
  for (size_t i = 0; i < bytes; ++i) at[i] = static_cast<uint8_t>(value >> (8 * i));
}

}  // namespace

uint32_t PlainFirmware::GetSystemFirmwareTable(uint32_t /*provider*/, uint32_t /*id*/,
                                               std::byte* buffer, uint32_t size) {
  if (size >= m_table.size()) std::memcpy(buffer, m_table.data(), m_table.size());
  return static_cast<uint32_t>(m_table.size());
}

std::vector<uint8_t> FourKilobytes() {
  constexpr size_t kSize = 4096;
  std::vector<uint8_t> table = virtual_notebook::BuildSmbiosTable({});
  constexpr uint8_t kMemoryDevice[] = {17, 8, 0, 1, 0, 0, 0, 0, 'D', 'I', 'M', 'M', 0, 0};
  while (table.size() + sizeof kMemoryDevice <= kSize) {
    table.insert(table.end(), std::begin(kMemoryDevice), std::end(kMemoryDevice));
  }
  PutNumber(table.data() + 4, table.size() - kHeaderSize, 4);
  return table;
}

std::vector<uint8_t> SmbiosDump(const std::vector<uint8_t>& table) {
  constexpr size_t kEntrySize = 24;
  constexpr size_t kTableAt = 32;
  std::array<uint8_t, kEntrySize> entry{'_', 'S', 'M', '3', '_'};
  const size_t size = table.size() - kHeaderSize;
  entry[6] = kEntrySize;
  entry[7] = table[1];  // the version that the table's header names
  entry[8] = table[2];
  entry[10] = 1;  // revision of the entry point
  PutNumber(entry.data() + 12, size, 4);
  PutNumber(entry.data() + 16, kTableAt, 8);
  // All bytes of the entry point add up to zero.
  entry[5] = static_cast<uint8_t>(-std::accumulate(entry.begin(), entry.end(), 0));
  std::vector<uint8_t> dump(kTableAt + size);
  std::ranges::copy(entry, dump.begin());
  std::copy(table.begin() + kHeaderSize, table.end(), dump.begin() + kTableAt);
  return dump;
}

}  // namespace nuvelta::bench
