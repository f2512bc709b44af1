#include "support/capture/smbios_names.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdio>
#include <span>
#include <string_view>

#include "auth/smbios.h"
#include "support/wide_text.h"

namespace nuvelta::support {

namespace {

constexpr uint8_t kSystem = 1;
constexpr size_t kUuidAt = 8;
constexpr size_t kUuidSize = 16;

struct Field {
  uint8_t type, offset;  // of the string's number
  NameKind kind;
};
constexpr std::array kNameFields{
    Field{1, 0x07, NameKind::kSerialNumber},  Field{2, 0x07, NameKind::kSerialNumber},
    Field{2, 0x08, NameKind::kAssetTag},      Field{3, 0x07, NameKind::kSerialNumber},
    Field{3, 0x08, NameKind::kAssetTag},      Field{4, 0x20, NameKind::kSerialNumber},
    Field{4, 0x21, NameKind::kAssetTag},      Field{17, 0x18, NameKind::kSerialNumber},
    Field{17, 0x19, NameKind::kAssetTag},     Field{22, 0x07, NameKind::kSerialNumber},
    Field{39, 0x08, NameKind::kSerialNumber}, Field{39, 0x09, NameKind::kAssetTag},
};
// Manufacturer, product, version, SKU and family of the system; of its board; of processors.
constexpr std::array kPlatformFields{
    Field{1, 0x04, {}}, Field{1, 0x05, {}}, Field{1, 0x06, {}}, Field{1, 0x19, {}},
    Field{1, 0x1A, {}}, Field{2, 0x04, {}}, Field{2, 0x05, {}}, Field{2, 0x06, {}},
    Field{4, 0x07, {}}, Field{4, 0x10, {}},
};

// In lower case.
constexpr std::array<std::string_view, 18> kNoNames{
    "no asset tag",
    "no asset information",
    "not specified",
    "not available",
    "not applicable",
    "not provided",
    "none",
    "unknown",
    "invalid",
    "default string",
    "system serial number",
    "chassis serial number",
    "base board serial number",
    "to be filled by o.e.m.",
    "asset tag",
    "serial number",
    "0123456789",
    "123456789",
};

struct Structure {
  size_t offset = 0;
  uint8_t type = 0, length = 0;
  std::vector<std::string_view> texts{};
};

// Structure after structure, for as long as they are whole.
template <class Visit>
void ForEachStructure(const SmbiosTable& table, Visit visit) {
  size_t at = 0;
  while (at + 4 <= table.End()) {
    Structure structure{.offset = at, .type = table.At(at), .length = table.At(at + 1)};
    if (structure.length < 4) return;
    at += structure.length;
    while (at < table.End() && table.At(at) != 0) {
      structure.texts.push_back(table.Text(at));
      at += structure.texts.back().size() + 1;
    }
    at += structure.texts.empty() ? 2 : 1;
    visit(structure);
  }
}

std::string TextOf(const SmbiosTable& table, const Structure& structure, const Field& field) {
  if (structure.type != field.type || field.offset >= structure.length) return {};
  const size_t number = table.At(structure.offset + field.offset);
  if (number == 0 || number > structure.texts.size()) return {};
  std::string_view text = structure.texts[number - 1];
  while (text.ends_with(' ')) text.remove_suffix(1);
  while (text.starts_with(' ')) text.remove_prefix(1);
  return Utf8OfAnsi(text);
}

bool IsNoName(const std::string& text) {
  std::string lower = text;
  std::ranges::transform(lower, lower.begin(), [](unsigned char c) { return std::tolower(c); });
  const bool all_alike = std::ranges::all_of(text, [&](char c) { return c == text.front(); });
  return text.empty() || all_alike || std::ranges::find(kNoNames, lower) != kNoNames.end();
}

// Its first three numbers are stored with their lowest byte first.
std::string TextOfUuid(const Bytes& uuid) {
  constexpr std::array<size_t, kUuidSize> kOrder{3, 2, 1,  0,  5,  4,  7,  6,
                                                 8, 9, 10, 11, 12, 13, 14, 15};
  std::string text;
  for (size_t i = 0; i < kOrder.size(); ++i) {
    std::array<char, 3> digits{};
    std::snprintf(digits.data(), digits.size(), "%02X", unsigned{uuid[kOrder[i]]});
    if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
    text += digits.data();
  }
  return text;
}

void AddUuid(const SmbiosTable& table, const Structure& system, std::vector<FoundName>& names) {
  if (system.type != kSystem || system.length < kUuidAt + kUuidSize) return;
  Bytes uuid;
  for (size_t i = 0; i < kUuidSize; ++i) uuid.push_back(table.At(system.offset + kUuidAt + i));
  // All zero or all ones: there is none.
  if (std::ranges::all_of(uuid, [&](uint8_t byte) { return byte == uuid[0]; })) return;
  names.push_back({.kind = NameKind::kUuid,
                   .text = TextOfUuid(uuid),
                   .raw = std::string(uuid.begin(), uuid.end())});
}

}  // namespace

std::vector<FoundName> NamesInFirmware(const Bytes& bytes) {
  const SmbiosTable table(std::as_bytes(std::span(bytes)));
  std::vector<FoundName> names;
  ForEachStructure(table, [&](const Structure& structure) {
    AddUuid(table, structure, names);
    for (const Field& field : kNameFields) {
      const std::string text = TextOf(table, structure, field);
      if (!IsNoName(text)) names.push_back({.kind = field.kind, .text = text});
    }
  });
  return names;
}

std::vector<std::string> PlatformTexts(const Bytes& bytes) {
  const SmbiosTable table(std::as_bytes(std::span(bytes)));
  std::vector<std::string> texts;
  ForEachStructure(table, [&](const Structure& structure) {
    for (const Field& field : kPlatformFields) texts.push_back(TextOf(table, structure, field));
  });
  if (const auto content = FindFccContent(table)) {
    const auto fcc = table.Bytes(content->offset, std::min<size_t>(content->length, 256));
    texts.emplace_back(reinterpret_cast<const char*>(fcc.data()), fcc.size());
  }
  std::erase_if(texts, [](const std::string& text) { return text.empty(); });
  return texts;
}

}  // namespace nuvelta::support
