// One reading of the raw firmware table.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace nuvelta {

class FirmwareTable {
 public:
  // Asks for the table's size, then for the table, in a block of the process heap.
  FirmwareTable();
  ~FirmwareTable();
  FirmwareTable(const FirmwareTable&) = delete;
  FirmwareTable& operator=(const FirmwareTable&) = delete;

  // False when there is no table or no memory for it.
  bool HasBuffer() const { return m_buffer != nullptr; }
  uint32_t Size() const { return m_size; }        // as asked for first
  uint32_t Written() const { return m_written; }  // as the reading answered
  // What was read; none when the table has grown above its size meanwhile.
  std::span<const std::byte> Bytes() const;

 private:
  uint32_t m_size = 0;
  uint32_t m_written = 0;
  std::byte* m_buffer = nullptr;
};

}  // namespace nuvelta
