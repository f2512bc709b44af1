#include "auth/firmware_table.h"

#include "platform/firmware.h"
#include "platform/memory.h"
#include "platform/platform.h"

namespace nuvelta {

FirmwareTable::FirmwareTable() {
  platform::Firmware& firmware = *platform::Os().firmware;
  m_size = firmware.GetSystemFirmwareTable(platform::kFirmwareProviderRsmb, 0, nullptr, 0);
  if (m_size == 0) return;
  m_buffer = static_cast<std::byte*>(platform::Os().memory->HeapAlloc(m_size));
  if (m_buffer == nullptr) return;
  m_written = firmware.GetSystemFirmwareTable(platform::kFirmwareProviderRsmb, 0, m_buffer, m_size);
}

FirmwareTable::~FirmwareTable() {
  if (m_buffer != nullptr) platform::Os().memory->HeapFree(m_buffer);
}

std::span<const std::byte> FirmwareTable::Bytes() const {
  return {m_buffer, m_written <= m_size ? m_written : 0};
}

}  // namespace nuvelta
