#include "notebook/model/smbios_builder.h"

#include <array>
#include <initializer_list>
#include <string>
#include <string_view>

namespace nuvelta::virtual_notebook {

namespace {

using Bytes = std::vector<uint8_t>;

// One structure: the formatted area, then the strings that its fields number.
class Structure {
 public:
  Structure(uint8_t type, uint8_t length, uint16_t handle) : m_formatted(length) {
    const std::array<uint8_t, 4> header{type, length, static_cast<uint8_t>(handle),
                                        static_cast<uint8_t>(handle >> 8U)};
    for (size_t i = 0; i < header.size(); ++i) Byte(i, header[i]);
  }

  // Fields behind the formatted length do not exist; setting them does nothing.
  void Byte(size_t offset, uint8_t value) {
    if (offset < m_formatted.size()) m_formatted[offset] = value;
  }

  void Put(size_t offset, std::initializer_list<uint8_t> values) {
    for (const uint8_t value : values) Byte(offset++, value);
  }

  void Text(size_t offset, std::string_view text) {
    if (text.empty() || offset >= m_formatted.size()) return;
    m_strings.insert(m_strings.end(), text.begin(), text.end());
    m_strings.push_back(0);
    Byte(offset, ++m_count);
  }

  void AppendTo(Bytes& table) const {
    table.insert(table.end(), m_formatted.begin(), m_formatted.end());
    table.insert(table.end(), m_strings.begin(), m_strings.end());
    // A set without strings is two zero bytes all the same.
    table.insert(table.end(), m_strings.empty() ? 2 : 1, 0);
  }

 private:
  Bytes m_formatted;
  Bytes m_strings;
  uint8_t m_count = 0;
};

Structure Bios(const SmbiosFields& fields) {
  Structure bios(0, 26, 0x0000);
  bios.Text(0x04, fields.system_manufacturer);
  bios.Text(0x05, "N47ET20W (1.09)");
  bios.Put(0x06, {0x00, 0xE0});
  bios.Text(0x08, "05/14/2026");
  bios.Put(0x09, {0xFF, 0x80, 0x98, 0x8A, 0x3F, 0x00, 0x00, 0x00, 0x00, 0x03, 0x0D, 1, 9, 1, 4});
  return bios;
}

Structure Chassis(const SmbiosFields& fields) {
  Structure chassis(3, 22, 0x0003);
  chassis.Text(0x04, fields.system_manufacturer);
  chassis.Byte(0x05, 0x0A);  // a notebook
  chassis.Text(0x06, "None");
  chassis.Text(0x07, fields.system_serial);
  chassis.Put(0x09, {0x03, 0x03, 0x03, 0x03});
  return chassis;
}

Structure OemStrings() {
  Structure oem(11, 5, 0x000B);
  oem.Text(0x04, "Reserved for the notebook's maker");
  return oem;
}

Structure System(const SmbiosFields& fields) {
  Structure system(1, fields.system_length, 0x0001);
  system.Text(0x04, fields.system_manufacturer);
  system.Text(0x05, fields.system_product);
  system.Text(0x06, fields.system_version);
  system.Text(0x07, fields.system_serial);
  system.Put(0x08, {0x4C, 0x27, 0x8B, 0xCC, 0x9D, 0x31, 0x11, 0xEF, 0xA1, 0x5E, 0x38, 0xF3, 0xAB,
                    0x10, 0x20, 0x30});
  system.Byte(0x18, 0x06);  // woken by the power switch
  system.Text(0x19, fields.system_sku);
  system.Text(0x1A, fields.system_family);
  return system;
}

Structure Baseboard(const SmbiosFields& fields) {
  Structure board(2, 15, 0x0002);
  board.Text(0x04, fields.baseboard_manufacturer);
  board.Text(0x05, fields.baseboard_product);
  board.Text(0x06, fields.baseboard_version);
  board.Text(0x07, fields.baseboard_serial);
  board.Text(0x08, fields.baseboard_asset_tag);
  board.Byte(0x09, 0x09);
  board.Put(0x0B, {0x03, 0x00, 0x0A, 0x00});
  return board;
}

Structure Processor(const SmbiosFields& fields) {
  Structure processor(4, 48, 0x0004);
  processor.Text(0x04, "U3E1");
  processor.Put(0x05, {0x03, 0xFE});  // a central processor of the family at 0x28
  processor.Text(0x07, fields.processor_manufacturer);
  processor.Text(0x10, fields.processor_version);
  processor.Put(0x11, {0x8A, 0x64, 0x00, 0x88, 0x13, 0x08, 0x07, 0x41, 0x01});
  processor.Put(0x23, {0x0C, 0x0C, 0x10, 0xFC, 0x00, 0xC6, 0x00, 0x0C, 0x00, 0x0C, 0x00, 0x10});
  return processor;
}

// The OEM structure's content is not made of numbered strings: its data byte and
// text are given together, whatever length it claims.
void AppendFcc(Bytes& table, const SmbiosFields& fields) {
  if (!fields.fcc_content) return;
  table.insert(table.end(), {0x85, fields.fcc_length, 0x85, 0x00});
  table.insert(table.end(), fields.fcc_content->begin(), fields.fcc_content->end());
  table.insert(table.end(), 2, 0);
}

Structure MemoryArray() {
  Structure array(16, 23, 0x0010);
  array.Put(0x04, {0x03, 0x03, 0x03, 0x00, 0x00, 0x00, 0x04, 0xFE, 0xFF, 0x02, 0x00});
  return array;
}

Structure MemoryDevice(uint16_t handle, std::string_view locator) {
  Structure device(17, 40, handle);
  device.Put(0x04, {0x10, 0x00, 0xFE, 0xFF, 0x40, 0x00, 0x40, 0x00, 0x00, 0x40, 0x0B, 0x00});
  device.Text(0x10, locator);
  device.Text(0x11, "BANK 0");
  device.Put(0x12, {0x23, 0x80, 0x40, 0xE0, 0x15});
  device.Text(0x17, "Example Memory");
  device.Text(0x1A, "EM5-16384");
  return device;
}

}  // namespace

std::vector<uint8_t> BuildSmbiosTable(const SmbiosFields& fields) {
  Bytes table{0, 3, 4, 0, 0, 0, 0, 0};
  const size_t header = table.size();
  Bios(fields).AppendTo(table);
  Chassis(fields).AppendTo(table);
  OemStrings().AppendTo(table);
  System(fields).AppendTo(table);
  Baseboard(fields).AppendTo(table);
  Processor(fields).AppendTo(table);
  AppendFcc(table, fields);
  MemoryArray().AppendTo(table);
  MemoryDevice(0x0011, "DIMM 0").AppendTo(table);
  MemoryDevice(0x0012, "DIMM 1").AppendTo(table);
  Structure(127, 4, 0xFEFF).AppendTo(table);

  const auto length = static_cast<uint32_t>(table.size() - header);
  for (size_t i = 0; i < 4; ++i) table[4 + i] = static_cast<uint8_t>(length >> (8 * i));
  return table;
}

std::vector<uint8_t> FirmwareTableOf(const Notebook& notebook) {
  if (!notebook.has_firmware_table) return {};
  return notebook.raw_firmware ? *notebook.raw_firmware : BuildSmbiosTable(notebook.firmware);
}

}  // namespace nuvelta::virtual_notebook
