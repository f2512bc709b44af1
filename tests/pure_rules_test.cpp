// The pure rules: firmware table, event records, hardware ids, platform table. The fuzz
// targets tell most of them once more, on inputs that nobody thought of.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <tuple>
#include <vector>

#include "auth/platform_table.h"
#include "auth/smbios.h"
#include "common/text_util.h"
#include "modem/hardware_id.h"
#include "service/logon_record.h"

namespace nuvelta::test {
namespace {

using namespace std::string_literals;
using Octets = std::string;
// Sized exactly, so that a sanitizer sees any read past the end.
std::vector<std::byte> Exact(const Octets& bytes) {
  const auto* first = reinterpret_cast<const std::byte*>(bytes.data());
  return {first, first + bytes.size()};
}
void Put(Octets& bytes, size_t offset, auto number) {
  std::memcpy(&bytes.at(offset), &number, sizeof number);
}
Octets Table(const Octets& structures, size_t claimed) {
  Octets table("\x01\x02\x03\x04\0\0\0\0"s + structures);
  Put(table, 4, static_cast<uint32_t>(claimed));
  return table;
}
// `rest` is what follows the formatted area.
Octets Structure(int type, int length, const Octets& rest = "\0\0"s) {
  const Octets header{static_cast<char>(type), static_cast<char>(length)};
  return header + Octets(static_cast<size_t>(std::max(length - 2, 0)), '\x11') + rest;
}
const Octets kMarker = "\x01NUVELTAFCCMODE";
Octets Fcc(const Octets& content, const Octets& closing = "\0\0"s) {
  return "\x85\x05\x22\x22" + content + closing;
}
bool IsFcc(const SmbiosTable& table) {
  const std::vector<uint8_t> marker(kMarker.begin(), kMarker.end());
  const auto content = FindFccContent(table);
  return content && IsFccContent(table, *content, marker);
}

TEST(SmbiosRules, ResolveStrings) {
  const Octets set = "a\0bc\0\0"s, next = set + "\x7f\x04xy\0\0"s;
  using Case = std::tuple<Octets, uint8_t, Octets>;
  for (const auto& [rest, number, text] :
       {Case{set, 0, ""}, Case{set, 1, "a"}, Case{set, 2, "bc"}, Case{set, 3, ""},
        Case{set, 255, ""}, Case{"\0\0b\0"s, 2, ""}, Case{"", 1, ""}, Case{next, 4, "\x7f\x04xy"},
        Case{"a\0b"s, 2, "b"}, Case{"a\0b"s, 3, ""}}) {
    const auto block = Exact(Table(Structure(1, 27, rest), 999));
    const SmbiosTable table(block);
    EXPECT_EQ(ResolveString(table, FindStructure(table, 1, 25).value(), number), text);
  }
  // The family number of a structure of 26 bytes is the first letter of its strings,
  // which are read past the claimed length.
  const auto block = Exact(Table(Structure(1, 26, "\x02\0family\0\0"s), 27));
  const SmbiosTable table(block);
  EXPECT_EQ(ResolveString(table, FindStructure(table, 1, 25).value(), table.At(26)), "family");
}

TEST(SmbiosRules, FindTheFccMarker) {
  Octets lower = kMarker, last = kMarker, compared = kMarker, binary = kMarker;
  std::ranges::transform(lower, lower.begin(), ToLower);
  last[14] = compared[13] = '?', binary[0] = '!';
  const auto is_fcc = [](const Octets& bytes) { return IsFcc(SmbiosTable(Exact(bytes))); };
  const Octets fcc = Fcc(kMarker), other = Structure(133, 6), none = Structure(1, 0, "\0"s);
  for (const Octets& bytes :
       {fcc, Fcc(lower), Fcc(last), Structure(1, 27) + fcc, fcc + other, none + fcc})
    EXPECT_TRUE(is_fcc(Table(bytes, 999))) << bytes;
  for (const Octets& bytes :
       {Fcc(compared), Fcc(binary), Fcc(kMarker.substr(0, 14)), Fcc(kMarker + 'E'),
        Fcc(kMarker, "\0"s), Fcc("\x01OTHER") + fcc, other + fcc})
    EXPECT_FALSE(is_fcc(Table(bytes, 999))) << bytes;
  // A claimed length that ends inside of the structure does not cut it; the bytes' end does.
  EXPECT_TRUE(is_fcc(Table(fcc, 1)));
  EXPECT_TRUE(is_fcc(Table(fcc, fcc.size() - 1)));
  EXPECT_FALSE(is_fcc(Table(fcc.substr(0, fcc.size() - 1), fcc.size())));
}
Octets Utf16(std::u16string_view text) {
  return {reinterpret_cast<const char*>(text.data()), text.size() * 2};
}
Octets EventRecord(uint32_t number, const Octets& after = Utf16(u"Wlclntfy\0PC\0"s),
                   uint16_t type = 4) {
  Octets record = Octets(56, '\x33') + after;
  for (const uint32_t member : {2U, 3U, 4U, 5U})
    Put(record, size_t{member} * 4, number * 10 + member);
  Put(record, 8, number), Put(record, 24, type);
  Put(record, 0, static_cast<uint32_t>(record.size()));
  return record;
}
// The number of the record found; 0 for none.
uint32_t Found(const Octets& records) {
  const auto record = FindLogonRecord(Exact(records));
  return record ? record->RecordNumber : 0;
}

TEST(LogonRecordRules, WalkTheRecords) {
  const Octets good = EventRecord(7), unended = EventRecord(1, Utf16(u"Wlclntfy")),
               bad = EventRecord(1, "", 2);
  const Octets source = Utf16(u"Wlclntfy\0"s);
  EXPECT_EQ(Found(EventRecord(9) + good), 9U);
  for (const Octets& first :
       {bad, unended, EventRecord(1, Utf16(u"WlClntfy\0"s)), EventRecord(1, source, 2),
        EventRecord(1, source, 0x104), EventRecord(1, Utf16(u"Wlclntfy2\0"s)),
        EventRecord(1, Utf16(u"Wlclntfy") + '\0')})
    EXPECT_EQ(Found(first + good), 7U) << first;
  Octets zero = bad, few = bad.substr(0, 55), beyond = good;
  Put(zero, 0, 0U), Put(few, 0, 55U);
  Put(beyond, 0, static_cast<uint32_t>(good.size() + 1));
  for (const Octets& records :
       {zero + good, few + good, beyond, good.substr(0, 55), unended + "\0\0"s, ""s})
    EXPECT_EQ(Found(records), 0U) << records;
  const LogonRecord record = FindLogonRecord(Exact(good)).value();
  EXPECT_EQ(std::tie(record.TimeGenerated, record.TimeWritten, record.EventID),
            std::make_tuple(73U, 74U, 75U));
  EXPECT_EQ(record.EventType << 16 | record.EventCategory, 0x43333);
  EXPECT_EQ(record.SourceName, u"Wlclntfy");
}

TEST(HardwareIdRules, ExpectFourModems) {
  for (const char* end : {"4A10&MI_00", "4A11&MI_00", "0A31&MI_00", "0A32&MI_00", "4A1", ""})
    EXPECT_TRUE(IsExpectedMbimHwid("USB\\VID_3A5E&PID_"s + end)) << end;
  for (const char* end : {"4A10&MI_02", "4a10&MI_00", "4A12&MI_00", "4A10&MI_00\\"})
    EXPECT_FALSE(IsExpectedMbimHwid("USB\\VID_3A5E&PID_"s + end)) << end;
}

TEST(PlatformRules, AllowModemsByPlatform) {
  static_assert(kPlatformCount == 55);
  const std::string first = "USB\\VID_3A5E&PID_4A10", second = "USB\\VID_3A5E&PID_4A11";
  EXPECT_EQ(platform_modem_map[7].key, "ThinkPad T14 Gen 5");
  EXPECT_EQ(platform_modem_map[10].key, "ThinkPad T14 Gen 5 AMD");
  for (size_t at = 0; at < kPlatformCount; ++at) {
    const std::string key(platform_modem_map[at].key);
    std::string upper = key;
    std::ranges::transform(upper, upper.begin(), ToUpper);
    EXPECT_TRUE(IsListedPlatform(upper)) << key;
    EXPECT_TRUE(IsAllowedModem(upper, "usb\\vid_3a5e&pid_4a10")) << key;
    EXPECT_EQ(IsAllowedModem(key, second), at < 11 && at != 7 && at != 10) << key;
    EXPECT_FALSE(IsAllowedModem(key, first + "&MI_00")) << key;
    EXPECT_EQ(IsCs24ProjectName(key), at < 11) << key;
    EXPECT_FALSE(IsCs24ProjectName(upper)) << key;
  }
  EXPECT_EQ(platform_modem_map[9].key, "ThinkPad T14s Gen5");
  EXPECT_FALSE(IsListedPlatform("ThinkPad T14s Gen 5"));
  EXPECT_EQ(Cs25PlatformKey("ThinkPad T16 Gen 4", "21qeS0"), "ThinkPad T16 Gen 4_21QE");
}

TEST(TextRules, FoldTheLettersAToZOnly) {
  EXPECT_FALSE(EqualIgnoreCase("ab", "abc"));
  for (int code = 0; code < 256; ++code) {
    const char byte = static_cast<char>(code), other = static_cast<char>(code ^ 0x20);
    const bool letter = (code | 0x20) >= 'a' && (code | 0x20) <= 'z';
    EXPECT_EQ(EqualIgnoreCase({&byte, 1}, {&other, 1}), letter) << code;
  }
}

}  // namespace
}  // namespace nuvelta::test
