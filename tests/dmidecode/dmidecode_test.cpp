// Our reading of firmware tables against that of dmidecode, on tables with the
// oddities of real firmware and on damaged ones. Where the two differ on purpose,
// the difference is named and must be of that kind.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

#include "auth/smbios.h"
#include "auth/systeminfo.h"
#include "dmidecode.h"
#include "fake_platform.h"
#include "source_folder.h"
#include "target.h"

namespace nuvelta::test {
namespace {

using Bytes = std::vector<uint8_t>;

constexpr size_t kHeader = 8;
constexpr size_t kDamagedTables = 600;

// Why the two may differ.
constexpr const char* kNotPrinted = "the structure is too short for dmidecode to print the field";
constexpr const char* kCut = "dmidecode prints nothing of a structure that the table's end cuts";
constexpr const char* kBadIndex = "we do not hold a string's number against the count of strings";
constexpr const char* kNoUuid = "dmidecode has words for a uuid of zeros or of ones alone";
constexpr const char* kZeroData = "a data byte of zero before another zero closes our FCC content";
constexpr const char* kShort = "our FCC search passes a structure shorter than its header";
constexpr const char* kEmptyFirst = "dmidecode lists no strings behind an empty first one";

struct Counts {
  size_t agreed = 0;
  size_t fcc_agreed = 0;
  std::map<std::string, size_t> explained;
};

Bytes WithLength(Bytes table) {
  const auto length = static_cast<uint32_t>(table.size() - kHeader);
  for (size_t i = 0; i < 4; ++i) table[4 + i] = static_cast<uint8_t>(length >> (8 * i));
  return table;
}

// As dmidecode shows it: what cannot be printed becomes a dot.
std::string Shown(std::string text) {
  for (char& c : text) {
    if (c < ' ' || c == 0x7F) c = '.';
  }
  return text;
}

// dmidecode swaps the first three parts since SMBIOS 2.6, we never do.
std::string ShownUuid(const std::string& ours, const Bytes& table) {
  std::string text = ours;
  std::ranges::transform(text, text.begin(), [](unsigned char c) { return std::tolower(c); });
  const int version = table[1] << 8 | table[2];
  if (version < 0x0206 || text.size() != 36) return text;
  const auto swap = [&](size_t left, size_t right) {
    std::swap_ranges(text.begin() + static_cast<ptrdiff_t>(left),
                     text.begin() + static_cast<ptrdiff_t>(left) + 2,
                     text.begin() + static_cast<ptrdiff_t>(right));
  };
  swap(0, 6);
  swap(2, 4);
  swap(9, 11);
  swap(14, 16);
  return text;
}

// Checks what we read of one structure.
class Comparison {
 public:
  Comparison(const Bytes& table, const DmiOutput& output, int type, int least, Counts& counts)
      : m_table(table), m_output(output), m_block(output.First(type, least)), m_counts(counts) {}

  void Text(const char* name, const std::string& ours) {
    const auto theirs = Printed(ours);
    if (!theirs) return;
    const auto field = m_block->fields.find(name);
    if (field == m_block->fields.end()) return Explain(kNotPrinted);
    if (Shown(ours) == field->second || (ours.empty() && field->second == "Not Specified")) {
      ++m_counts.agreed;
    } else if (field->second == "<BAD INDEX>") {
      Explain(kBadIndex);
    } else {
      ADD_FAILURE() << name << ": ours is \"" << Shown(ours) << "\", dmidecode's \""
                    << field->second << "\"";
    }
  }

  void Uuid(const std::string& ours) {
    if (!Printed(ours)) return;
    const auto field = m_block->fields.find("UUID");
    if (field == m_block->fields.end()) return Explain(kNotPrinted);
    if (ShownUuid(ours, m_table) == field->second) {
      ++m_counts.agreed;
    } else if (field->second.starts_with("Not ") &&
               ours.find_first_not_of(ours.front() == 'F' ? "F-" : "0-") == std::string::npos) {
      Explain(kNoUuid);
    } else {
      ADD_FAILURE() << "uuid: ours is " << ours << ", dmidecode's " << field->second;
    }
  }

 private:
  // False when dmidecode prints no such structure; then we have none either.
  std::optional<bool> Printed(const std::string& ours) {
    if (m_block != nullptr && !m_block->cut) return true;
    if (m_block != nullptr || (!m_output.whole && !ours.empty())) {
      Explain(kCut);
    } else {
      EXPECT_EQ(ours, "") << "dmidecode has no such structure";
    }
    return std::nullopt;
  }
  void Explain(const char* reason) { ++m_counts.explained[reason]; }

  const Bytes& m_table;
  const DmiOutput& m_output;
  const DmiBlock* m_block;
  Counts& m_counts;
};

std::string Hex(const Bytes& bytes) {
  std::string text;
  for (const uint8_t byte : bytes) {
    text += "0123456789ABCDEF"[byte >> 4U];
    text += "0123456789ABCDEF"[byte & 15U];
  }
  return text;
}

// The FCC structure as dmidecode shows it: its data byte, then a line a string.
std::string PrintedFcc(DmiBlock block) {
  const auto& bytes = block.lists["Header and Data"];
  std::string text = bytes.size() == 1 && bytes[0].size() == 14 ? bytes[0].substr(12) : "";
  for (const std::string& string : block.lists["Strings"]) text += '\n' + string;
  return text;
}

std::string OurFcc(const std::string& content) {
  std::string text = Hex({static_cast<uint8_t>(content[0])});
  if (content.size() > 1) text += '\n';
  for (const char c : content.substr(1)) text += c == '\0' ? "\n" : Shown({c});
  return text;
}

void CompareFcc(const Bytes& table, const DmiOutput& output, Counts& counts) {
  const SmbiosTable ours(std::as_bytes(std::span(table)));
  const auto fcc = FindFccContent(ours);
  const DmiBlock* block = output.First(133, 0);
  if (block != nullptr ? block->length == 5 && block->cut : !output.whole) {
    EXPECT_FALSE(fcc && fcc->closed && fcc->length > 0) << "dmidecode finds no end of it";
    if (fcc) ++counts.explained[kCut];
    return;
  }
  if (block == nullptr && output.stopped && fcc) {
    ++counts.explained[kShort];
    return;
  }
  const bool expected = block != nullptr && block->length == 5;
  ASSERT_EQ(fcc && fcc->closed, expected) << "whether there is an FCC structure";
  if (!expected) return;
  const auto bytes = ours.Bytes(fcc->offset, fcc->length);
  const std::string content(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  const std::string theirs = PrintedFcc(*block);
  if (content.empty()) {
    EXPECT_EQ(theirs, "00");
    ++counts.explained[kZeroData];
  } else if (content.size() > 1 && content[1] == '\0') {
    EXPECT_EQ(theirs, OurFcc(content.substr(0, 1)));
    ++counts.explained[kEmptyFirst];
  } else {
    EXPECT_EQ(OurFcc(content), theirs);
    ++counts.fcc_agreed;
  }
}

void Compare(const Bytes& table, Counts& counts) {
  SCOPED_TRACE(Hex(table));
  static fuzz::FakePlatform fake;
  fake.firmware.table = table;
  const Systeminfo info;
  const DmiOutput output = RunDmidecode(table);

  Comparison system(table, output, 1, 25, counts);
  system.Text("Manufacturer", info.manufacturer_);
  system.Text("Product Name", info.productname_);
  system.Text("Version", info.project_name_);
  system.Text("Serial Number", info.serialnumber_);
  system.Text("SKU Number", info.sku_);
  system.Text("Family", info.family_);
  system.Uuid(info.uuid_);
  Comparison board(table, output, 2, 8, counts);
  board.Text("Manufacturer", info.baseboard_manufacturer_);
  board.Text("Product Name", info.baseboard_product_);
  board.Text("Version", info.baseboard_version_);
  board.Text("Serial Number", info.baseboard_serialnumber_);
  board.Text("Asset Tag", info.baseboard_asset_tag_);
  Comparison processor(table, output, 4, 22, counts);
  processor.Text("Version", info.processor_manufacturer_);
  CompareFcc(table, output, counts);
}

// The seeds and findings of the fuzz targets, among them what real notebooks have been seen
// to carry; each with the length that its bytes have. Those of the texts begin with a byte
// that is not of the table.
std::vector<Bytes> Tables() {
  std::vector<Bytes> tables;
  const std::filesystem::path seeds = SourceFolder() / "tests/fuzz/seeds";
  for (const auto& [folder, skip] : {std::pair{"smbios", 0}, std::pair{"systeminfo", 1}}) {
    for (const auto& entry : std::filesystem::directory_iterator(seeds / folder)) {
      std::ifstream file(entry.path(), std::ios::binary);
      file.ignore(skip);
      const std::string bytes(std::istreambuf_iterator<char>(file), {});
      if (bytes.size() > kHeader) tables.push_back(WithLength({bytes.begin(), bytes.end()}));
    }
  }
  std::ranges::sort(tables);  // the folder's order is none
  return tables;
}

class Dmidecode : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(HasDmidecode()) << "dmidecode is not installed (tools/setup installs it)";
  }
};

TEST_F(Dmidecode, ReadsOddTablesAsWeDo) {
  Counts counts;
  for (const Bytes& table : Tables()) Compare(table, counts);
  EXPECT_GT(counts.agreed, 200U);
  EXPECT_GT(counts.fcc_agreed, 20U);
  for (const char* reason :
       {kNotPrinted, kCut, kBadIndex, kNoUuid, kZeroData, kShort, kEmptyFirst}) {
    EXPECT_GT(counts.explained[reason], 0U) << reason;
  }
}

TEST_F(Dmidecode, ReadsDamagedTablesAsWeDo) {
  const std::vector<Bytes> tables = Tables();
  std::mt19937 random(20261116);
  Counts counts;
  for (size_t i = 0; i < kDamagedTables && !HasFailure(); ++i) {
    Bytes table = tables[i % tables.size()];
    const Bytes structures = fuzz::Damaged(std::span(table).subspan(kHeader), random);
    table.resize(kHeader);
    table.insert(table.end(), structures.begin(), structures.end());
    if (!structures.empty()) Compare(WithLength(table), counts);
  }
  EXPECT_GT(counts.agreed, kDamagedTables * 6) << "of 13 fields a table";
  EXPECT_GT(counts.fcc_agreed, kDamagedTables / 10);
  for (const auto& [reason, count] : counts.explained) std::cout << count << ": " << reason << '\n';
}

}  // namespace
}  // namespace nuvelta::test
