#include <algorithm>
#include <array>
#include <filesystem>

#include "notebook/scenario/scenario_parts.h"
#include "platform/fcc_marker.h"

namespace nuvelta::virtual_notebook {

namespace {

constexpr size_t kLargestTable = 1U << 20U;

constexpr std::array kTexts{
    Word{"system_manufacturer", &SmbiosFields::system_manufacturer},
    Word{"system_product", &SmbiosFields::system_product},
    Word{"system_version", &SmbiosFields::system_version},
    Word{"system_serial", &SmbiosFields::system_serial},
    Word{"system_sku", &SmbiosFields::system_sku},
    Word{"system_family", &SmbiosFields::system_family},
    Word{"processor_manufacturer", &SmbiosFields::processor_manufacturer},
    Word{"processor_version", &SmbiosFields::processor_version},
    Word{"baseboard_manufacturer", &SmbiosFields::baseboard_manufacturer},
    Word{"baseboard_product", &SmbiosFields::baseboard_product},
    Word{"baseboard_version", &SmbiosFields::baseboard_version},
    Word{"baseboard_serial", &SmbiosFields::baseboard_serial},
    Word{"baseboard_asset_tag", &SmbiosFields::baseboard_asset_tag},
};

enum class Fcc { kPresent, kAbsent, kLowerCase, kTooLong, kTooShort };
constexpr std::array kFccWords{
    Word{"present", Fcc::kPresent},      Word{"absent", Fcc::kAbsent},
    Word{"lower_case", Fcc::kLowerCase}, Word{"too_long", Fcc::kTooLong},
    Word{"too_short", Fcc::kTooShort},
};

std::optional<std::vector<uint8_t>> ReadFcc(const JsonCursor& at) {
  if (at.IsObject()) {
    const JsonCursor hex = JsonObject(at, {"hex"}).Need("hex");
    auto bytes = hex.Hex();
    if (bytes.empty()) hex.RefuseValue("at least the data byte");
    return bytes;
  }
  std::vector<uint8_t> content(platform::kFccMarker.begin(), platform::kFccMarker.end());
  switch (at.Choice(kFccWords)) {
    case Fcc::kPresent:
      break;
    case Fcc::kAbsent:
      return {};
    case Fcc::kLowerCase:
      for (uint8_t& byte : content) {
        if (byte >= 'A' && byte <= 'Z') byte = static_cast<uint8_t>(byte - 'A' + 'a');
      }
      break;
    case Fcc::kTooLong:
      content.push_back('X');
      break;
    case Fcc::kTooShort:
      content.pop_back();
      break;
  }
  return content;
}

void ReadFields(const JsonObject& object, SmbiosFields& fields) {
  for (const auto& [key, member] : kTexts) object.Read(key, fields.*member);
  object.ReadWhole("system_length", fields.system_length, 4, 27);
  if (const auto fcc = object.Find("fcc")) fields.fcc_content = ReadFcc(*fcc);
  object.ReadWhole("fcc_length", fields.fcc_length, 4, 19);
}

}  // namespace

void ReadFirmware(const JsonCursor& at, const std::string& folder, Notebook& notebook) {
  if (at.IsNull()) {
    notebook.has_firmware_table = false;
    return;
  }
  std::vector<std::string_view> keys{"raw_file", "raw_hex", "system_length", "fcc", "fcc_length"};
  for (const auto& [key, member] : kTexts) keys.push_back(key);
  const JsonObject object(at, keys);
  constexpr std::array<std::string_view, 2> raw_keys{"raw_file", "raw_hex"};
  const auto raw_key = object.OneOf(raw_keys);
  if (!raw_key) return ReadFields(object, notebook.firmware);

  for (const std::string_view key : keys) {
    if (key != *raw_key && object.Has(key)) {
      object.Need(key).Refuse("given together with \"" + std::string(*raw_key) + "\"",
                              "either a raw table or named fields");
    }
  }
  const JsonCursor raw = object.Need(*raw_key);
  if (*raw_key == "raw_hex") {
    notebook.raw_firmware = raw.Hex();
  } else {
    const std::string bytes = ReadRawFile(raw, folder, kLargestTable);
    notebook.raw_firmware.emplace(bytes.begin(), bytes.end());
  }
}

std::string ReadRawFile(const JsonCursor& at, const std::string& folder, size_t most) {
  const std::filesystem::path name = at.NonEmptyText();
  if (name.is_absolute() || std::ranges::find(name, "..") != name.end()) {
    at.RefuseValue("a file in the scenario's folder or below it");
  }
  std::string why;
  auto bytes = ReadWholeFile((std::filesystem::path(folder) / name).string(), most, why);
  if (!bytes) {
    at.Refuse("the file \"" + name.string() + "\": " + why,
              "a file of at most " + std::to_string(most >> 20U) + " MiB that can be read");
  }
  return *std::move(bytes);
}

}  // namespace nuvelta::virtual_notebook
