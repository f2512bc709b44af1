// Inputs that no honest machine gives, through whole stories: nothing crashes,
// and the radio is switched on only where the rules allow it.
#include <gtest/gtest.h>

#include <algorithm>

#include "notebook/model/smbios_builder.h"
#include "platform/fcc_marker.h"
#include "story_support.h"

namespace nuvelta::test {
namespace {

using virtual_notebook::RegistryValue;
using Bytes = std::vector<uint8_t>;

Told TellAndCheck(const Scenario& scenario) {
  Told told = Tell(scenario);
  EXPECT_TRUE(told.report.Behaved()) << told.report.deadlock;
  EXPECT_EQ(States(told.report), "2 4 3 1");
  EXPECT_EQ(told.report.leaked_handles, 0U);
  return told;
}

void PutLength(Bytes& table, uint32_t length) {
  for (size_t i = 0; i < 4; ++i) table[4 + i] = static_cast<uint8_t>(length >> (8 * i));
}

// Where the FCC structure's closing zeros end.
size_t EndOfFcc(const Bytes& table) {
  const auto marker = std::ranges::search(table, platform::kFccMarker);
  return static_cast<size_t>(marker.end() - table.begin()) + 2;
}

TEST(Hostile, FirmwareTablesCutAnywhereSwitchOnOnlyWithTheWholeFccStructure) {
  Scenario scenario = Inline("{}");
  const Bytes whole = virtual_notebook::BuildSmbiosTable(scenario.notebook.firmware);
  const size_t end_of_fcc = EndOfFcc(whole);
  ASSERT_LE(end_of_fcc, whole.size());
  for (size_t size = 0; size <= whole.size(); ++size) {
    Bytes cut(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(size));
    scenario.notebook.raw_firmware = cut;
    EXPECT_EQ(TellAndCheck(scenario).report.radio_after, size >= end_of_fcc ? 1 : 4) << size;
  }
}

TEST(Hostile, FirmwareLengthsThatLieAreHeldAgainstTheBytes) {
  Scenario scenario = Inline("{}");
  const Bytes whole = virtual_notebook::BuildSmbiosTable(scenario.notebook.firmware);
  const auto end_of_fcc = static_cast<uint32_t>(EndOfFcc(whole));
  // Of the last structure, 21 bytes, the walk has to see the header; what the header
  // leads to may lie behind the claimed end.
  const std::vector<std::pair<uint32_t, int>> lengths{
      {0, 4},          {1, 4},         {end_of_fcc - 8 - 21, 4}, {end_of_fcc - 8 - 19, 1},
      {0x7FFFFFFF, 1}, {0xFFFFFFFF, 1}};
  for (const auto& [length, radio] : lengths) {
    scenario.notebook.raw_firmware = whole;
    PutLength(*scenario.notebook.raw_firmware, length);
    EXPECT_EQ(TellAndCheck(scenario).report.radio_after, radio) << length;
  }
  // Structures that claim no length, or more than there is, end the walk.
  for (const unsigned length : {0U, 3U, 255U}) {
    scenario.notebook.raw_firmware = whole;
    (*scenario.notebook.raw_firmware)[9] = static_cast<uint8_t>(length);
    TellAndCheck(scenario);
  }
  // Only zeros, and only a header.
  for (const size_t size : {size_t{8}, size_t{4096}}) {
    scenario.notebook.raw_firmware = Bytes(size, 0);
    PutLength(*scenario.notebook.raw_firmware, static_cast<uint32_t>(size - 8));
    EXPECT_EQ(TellAndCheck(scenario).report.radio_after, 4) << size;
  }
}

TEST(Hostile, RegistryValuesCountOnlyAsNumbersAndByTheirFirstByte) {
  Scenario scenario = Inline(R"({'notebook': {'firmware': {'fcc': 'absent'}}})");
  auto& values = scenario.notebook.registry["SOFTWARE\\Nuvelta Wireless Inc\\MAService"];
  const std::vector<std::pair<std::string, uint8_t>> switches{{"SupportVerifyPlatform", 0},
                                                              {"IsDisableVerify", 1}};
  for (const auto& [name, off] : switches) {
    for (const uint32_t type : {0U, 1U, 3U, 4U, 7U, 11U, 0xFFFFFFFFU}) {
      for (const size_t size : {0U, 1U, 3U, 4U, 5U, 4096U}) {
        Bytes data(size, 0x5A);
        if (size > 0) data[0] = off;
        values.clear();
        values[name] = RegistryValue{.type = type, .data = data};
        const bool switched_off = type == 4 && size > 0;
        EXPECT_EQ(TellAndCheck(scenario).report.radio_after, switched_off ? 1 : 4)
            << name << ", type " << type << ", size " << size;
      }
    }
  }
}

TEST(Hostile, LogSwitchOfAnotherTypeIsAbsent) {
  Scenario scenario = Inline("{}");
  auto& value =
      scenario.notebook.registry["SOFTWARE\\Nuvelta Wireless Inc\\Logs"]["IsMAServiceLog"];
  value = {.type = 1, .data = {0}};
  EXPECT_FALSE(TellAndCheck(scenario).log.empty());
  value = {.type = 4, .data = {0, 1}};  // 256
  EXPECT_TRUE(TellAndCheck(scenario).log.empty());
  value = {.type = 4, .data = {1, 1, 0, 0}};  // 257
  EXPECT_FALSE(TellAndCheck(scenario).log.empty());
}

TEST(Hostile, AdaptersWithOddNames) {
  // An empty name is part of every name: the first subkey is taken.
  const Told empty = TellAndCheck(Inline(R"({'notebook': {'modem': {'adapter_name': ''}}})"));
  EXPECT_EQ(empty.report.radio_after, 4);
  EXPECT_EQ(empty.Count("szMbimHwid = PCI\\VEN_8086&DEV_15FB&SUBSY\r\n"), 30U);

  Scenario scenario = Inline("{}");
  scenario.notebook.modem.adapter_name = std::string(4096, 'A');
  EXPECT_EQ(TellAndCheck(scenario).report.radio_after, 4);  // no key holds the first 255 of it
  scenario = Inline("{}");
  scenario.notebook.modem.instance_id += std::string(4096, 'A');
  TellAndCheck(scenario);
  scenario.notebook.modem.instance_id = "";
  const Told none = TellAndCheck(scenario);
  EXPECT_LINES(none.Between("Get Instance Id", "- CDeviceHelper"),
               Lines({"i :   Get Instance Id ", "i :   not get hardware id,return",
                      "h : - CDeviceHelper::IsNuveltaMBIMDevcieExist"}));
}

Bytes Wide(const std::string& text) {
  Bytes bytes;
  for (const char c : text) bytes.insert(bytes.end(), {static_cast<uint8_t>(c), 0});
  return bytes;
}

TEST(Hostile, HardwareIdsWithoutEnd) {
  Scenario scenario = Inline("{}");
  auto& devices = scenario.notebook.devices;
  const auto tell_with = [&](const Bytes& id) {
    devices = {{.hardware_id = {}, .raw_hardware_id = id}};
    return TellAndCheck(scenario);
  };
  const std::string pci = "PCI\\VEN_2F1B&DEV_0001";
  // The maker's PCI device, without a terminator and as long as the buffer.
  Bytes full = Wide(pci + std::string(512 - pci.size(), 'X'));
  EXPECT_LINES(tell_with(full).Matching("find auth hwid"),
               "i :   find auth hwid : PCI\\VEN_2F1B&DEV_0001XXXXXXXXXXXX,return true\n");
  // Larger than the buffer: the property cannot be read, and the device is skipped.
  EXPECT_EQ(tell_with(Wide(pci + std::string(2048 - pci.size(), 'X'))).report.radio_after, 1);
  for (const Bytes& id : {Bytes{}, Bytes{0x50}, Bytes{0x50, 0, 0x43}, Bytes(1024, 0xD8)}) {
    EXPECT_EQ(tell_with(id).report.radio_after, 1) << id.size();
  }
}

TEST(Hostile, EventRecordsThatLieEndTheSearch) {
  // 56 bytes of header and a source name, both given in full.
  const auto record = [](uint32_t length, const Bytes& source) {
    Bytes bytes(56, 0);
    for (size_t i = 0; i < 4; ++i) bytes[i] = static_cast<uint8_t>(length >> (8 * i));
    bytes[24] = 4;
    bytes.insert(bytes.end(), source.begin(), source.end());
    return bytes;
  };
  Bytes ended = Wide("Wlclntfy");
  ended.insert(ended.end(), {0, 0});
  const std::vector<std::pair<Bytes, bool>> records{
      {record(74, ended), true},  // an honest one
      {record(0, ended), false},  {record(55, ended), false},
      {record(75, ended), false}, {record(0xFFFFFFFF, ended), false},
      {record(56, {}), false},    {record(72, Wide("Wlclntfy")), false},  // its name has no end
      {Bytes(3, 0xFF), false},    {Bytes(0x9000, 0xFF), false},           // fits no buffer
  };
  Scenario scenario = Inline(R"({'events': [{'do': 'start'}, {'at': 9, 'do': 'suspend'},
    {'at': 20, 'do': 'modem_changes', 'radio': 4}, {'do': 'resume'}]})");
  for (const auto& [bytes, found] : records) {
    scenario.notebook.event_log = {{.raw = bytes}};
    const Told told = TellAndCheck(scenario);
    EXPECT_EQ(told.Count("find logon time !!") == 1, found);
    EXPECT_EQ(told.Count("so set a fake time"), found ? 0U : 1U);
    EXPECT_EQ(told.report.radio_after, 1);
  }
}

TEST(Hostile, ShortAnswersAreFailedQueries) {
  for (size_t size = 0; size <= 5; ++size) {
    Scenario scenario = Inline(R"({'notebook': {'modem': {'query': [{'data': ''}]}}})");
    scenario.notebook.modem.query.front().data = Bytes{1, 0, 0, 0, 9};
    scenario.notebook.modem.query.front().data.resize(size);
    const Told told = TellAndCheck(scenario);
    EXPECT_EQ(Commands(told.report), size < 4 ? "00*2 01000000" : "00") << size;
    EXPECT_EQ(told.Count("get cfun fail,retry"), size < 4 ? 1U : 0U) << size;
  }
}

}  // namespace
}  // namespace nuvelta::test
