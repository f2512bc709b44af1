// Both readers of the firmware table, through the ports. The first byte of the
// input says how the table changes between the two calls that read it.
#include "auth/systeminfo.h"

#include "fake_platform.h"
#include "smbios_reference.h"
#include "target.h"

namespace nuvelta::fuzz {
namespace {

// What the second of the two calls finds.
std::optional<uint32_t> SecondSize(uint8_t mode, uint32_t size) {
  switch (mode & 7U) {
    case 1:
      return 0;  // the call fails
    case 2:
      return size / 2;
    case 3:
      return size + 1;
    default:
      return std::nullopt;
  }
}

void RequireTexts(const Systeminfo& info, const SmbiosReference& reference) {
  const auto system = reference.First(1, 25);
  const auto processor = reference.First(4, 22);
  const auto board = reference.First(2, 8);
  Require(info.manufacturer_ == reference.Field(system, 0x04), "manufacturer");
  Require(info.productname_ == reference.Field(system, 0x05), "product");
  Require(info.project_name_ == reference.Field(system, 0x06), "project name");
  Require(info.serialnumber_ == reference.Field(system, 0x07), "serial number");
  Require(info.uuid_ == reference.Uuid(system), "uuid, its bytes as they are stored");
  const bool has_sku = system && system->length >= 26;
  Require(info.sku_ == (has_sku ? reference.Field(system, 0x19) : ""), "sku");
  Require(info.family_ == (has_sku ? reference.Field(system, 0x1A) : ""), "family");
  Require(info.processor_manufacturer_ == reference.Field(processor, 0x10), "processor");
  Require(info.baseboard_manufacturer_ == reference.Field(board, 0x04), "board manufacturer");
  Require(info.baseboard_product_ == reference.Field(board, 0x05), "board product");
  Require(info.baseboard_version_ == reference.Field(board, 0x06), "board version");
  Require(info.baseboard_serialnumber_ == reference.Field(board, 0x07), "board serial number");
  Require(info.baseboard_asset_tag_ == reference.Field(board, 0x08), "board asset tag");
}

void Run(Bytes bytes) {
  static FakePlatform fake;
  Input input(bytes);
  const uint8_t mode = input.Byte();
  const Bytes table = input.Rest();
  fake.firmware.table.assign(table.begin(), table.end());
  fake.firmware.second_size = SecondSize(mode, static_cast<uint32_t>(table.size()));
  fake.memory.refuse = (mode & 0x40U) != 0;
  fake.memory.left_over = fake.firmware.table;  // must not be taken for what was read

  const bool refused = fake.memory.refuse || table.empty();
  const uint32_t second = fake.firmware.second_size.value_or(static_cast<uint32_t>(table.size()));
  // The texts need the whole table, FCC mode takes what there is.
  const bool readable = !refused && second == table.size();
  RequireTexts(Systeminfo(), SmbiosReference(readable ? table : Bytes()));
  const Bytes written = refused || second > table.size() ? Bytes() : table.first(second);
  Require(Systeminfo::isFccMode() == SmbiosReference(written).IsFcc(), "FCC mode");
  Require(fake.HoldsNothing(), "the table's buffer is freed");
}

const Registration g_registration("systeminfo", Run);

}  // namespace
}  // namespace nuvelta::fuzz
