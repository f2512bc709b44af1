#include "auth/systeminfo.h"

#include <array>
#include <cstdio>

#include "auth/firmware_table.h"
#include "auth/smbios.h"
#include "common/logger.h"

namespace nuvelta {

namespace {

constexpr const char* kSysteminfo = "Systeminfo::Systeminfo";

constexpr uint8_t kSystemType = 1;
constexpr uint8_t kSystemMinLength = 25;
constexpr uint8_t kSystemLengthWithSku = 26;
constexpr uint8_t kBaseboardType = 2;
constexpr uint8_t kBaseboardMinLength = 8;
constexpr uint8_t kProcessorType = 4;
constexpr uint8_t kProcessorMinLength = 22;
constexpr size_t kUuidOffset = 0x08;
constexpr size_t kUuidSize = 16;

// One structure, its fields read by their offset in the formatted area. A field
// just past that area is read like any other.
class Fields {
 public:
  Fields(const SmbiosTable& table, const SmbiosStructure& structure)
      : m_table(table), m_structure(structure) {}

  uint8_t Byte(size_t offset) const { return m_table.At(m_structure.offset + offset); }
  std::string Text(size_t offset) const {
    return std::string(ResolveString(m_table, m_structure, Byte(offset)));
  }
  std::span<const std::byte> Bytes(size_t offset, size_t count) const {
    return m_table.Bytes(m_structure.offset + offset, count);
  }

 private:
  const SmbiosTable& m_table;
  const SmbiosStructure& m_structure;
};

// [fixed] no part's bytes are swapped.
std::string FormatUuid(std::span<const std::byte> bytes) {
  if (bytes.size() < kUuidSize) return {};
  const auto at = [&](size_t index) { return std::to_integer<unsigned>(bytes[index]); };
  std::array<char, 50> text{};
  std::snprintf(text.data(), text.size(),
                "%02X%02X%02X%02X-%02X%02X-%02X%02X-%02X%02X-%02X%02X%02X%02X%02X%02X", at(0),
                at(1), at(2), at(3), at(4), at(5), at(6), at(7), at(8), at(9), at(10), at(11),
                at(12), at(13), at(14), at(15));
  return text.data();
}

}  // namespace

Systeminfo::Systeminfo() {
  const FirmwareTable firmware;
  if (!firmware.HasBuffer() || firmware.Written() != firmware.Size()) return;
  const SmbiosTable table(firmware.Bytes());
  LogInfo(kSysteminfo,
          "bios_data->SMBIOSMajorVersion = %d,bios_data->SMBIOSMinorVersion = %d"
          ",bios_data->Used20CallingMethod = %d,bios_data->DmiRevision = %d"
          ", bios_data->Length = %d",
          table.SMBIOSMajorVersion, table.SMBIOSMinorVersion, table.Used20CallingMethod,
          table.DmiRevision, static_cast<int>(table.Length));
  ReadSystem(table);
  ReadProcessor(table);
  ReadBaseboard(table);
}

void Systeminfo::ReadSystem(const SmbiosTable& table) {
  const auto structure = FindStructure(table, kSystemType, kSystemMinLength);
  if (!structure) return;
  const Fields fields(table, *structure);
  manufacturer_ = fields.Text(0x04);
  productname_ = fields.Text(0x05);
  serialnumber_ = fields.Text(0x07);
  project_name_ = fields.Text(0x06);
  LogInfo(kSysteminfo, "manufacturer_ = %s", manufacturer_.c_str());
  LogInfo(kSysteminfo, "productname_  = %s", productname_.c_str());
  LogInfo(kSysteminfo, "serialnumber_ = %s", serialnumber_.c_str());
  LogInfo(kSysteminfo, "project_name_ = %s", project_name_.c_str());
  uuid_ = FormatUuid(fields.Bytes(kUuidOffset, kUuidSize));
  if (structure->length < kSystemLengthWithSku) return;
  sku_ = fields.Text(0x19);
  family_ = fields.Text(0x1A);
  LogInfo(kSysteminfo, "sku_\t\t= %s", sku_.c_str());
  LogInfo(kSysteminfo, "family_\t= %s", family_.c_str());
}

void Systeminfo::ReadProcessor(const SmbiosTable& table) {
  const auto structure = FindStructure(table, kProcessorType, kProcessorMinLength);
  if (!structure) return;
  const Fields fields(table, *structure);
  processor_manufacturer_ = fields.Text(0x10);
  LogInfo(kSysteminfo, "processor_manufacturer_= %s", processor_manufacturer_.c_str());
  // [fixed] read as string numbers, though the first two are enumerations.
  LogInfo(kSysteminfo, "processor Type = %s", fields.Text(0x05).c_str());
  LogInfo(kSysteminfo, "processor Family = %s", fields.Text(0x06).c_str());
  LogInfo(kSysteminfo, "processor Manufacturer = %s", fields.Text(0x07).c_str());
}

void Systeminfo::ReadBaseboard(const SmbiosTable& table) {
  const auto structure = FindStructure(table, kBaseboardType, kBaseboardMinLength);
  if (!structure) return;
  const Fields fields(table, *structure);
  LogInfo(kSysteminfo, "baseboard_information->Header.type : %d", structure->type);
  LogInfo(kSysteminfo, "baseboard_information->Header.length : %d", structure->length);
  LogInfo(kSysteminfo, "baseboard_information->Header.Handle : 0x%x",
          static_cast<unsigned>(fields.Byte(3) << 8 | fields.Byte(2)));
  baseboard_manufacturer_ = fields.Text(0x04);
  baseboard_product_ = fields.Text(0x05);
  baseboard_version_ = fields.Text(0x06);
  baseboard_serialnumber_ = fields.Text(0x07);
  baseboard_asset_tag_ = fields.Text(0x08);
  LogInfo(kSysteminfo, "[%d]baseboard_manufacturer_ = %s", fields.Byte(0x04),
          baseboard_manufacturer_.c_str());
  LogInfo(kSysteminfo, "[%d]baseboard_product_  = %s", fields.Byte(0x05),
          baseboard_product_.c_str());
  LogInfo(kSysteminfo, "[%d]baseboard_version_ = %s", fields.Byte(0x06),
          baseboard_version_.c_str());
  LogInfo(kSysteminfo, "[%d]baseboard_serialnumber_ = %s", fields.Byte(0x07),
          baseboard_serialnumber_.c_str());
  LogInfo(kSysteminfo, "[%d]baseboard_asset_tag_  = %s", fields.Byte(0x08),
          baseboard_asset_tag_.c_str());
}

}  // namespace nuvelta
