#include <algorithm>

#include "auth/firmware_table.h"
#include "auth/platform_table.h"
#include "auth/smbios.h"
#include "auth/systeminfo.h"
#include "common/text_util.h"
#include "platform/fcc_marker.h"
#include "platform/platform.h"
#include "platform/threads.h"
#include "support/inspections.h"

namespace nuvelta::support {

namespace {

constexpr uint8_t kFccType = 133;
// A name shorter than this gives way to the family.
constexpr size_t kShortestName = 3;
constexpr size_t kLongestContent = 256;

}  // namespace

FirmwareFacts InspectFirmware() {
  FirmwareFacts facts;
  {
    const FirmwareTable firmware;
    facts.has_table = firmware.HasBuffer() && firmware.Written() == firmware.Size();
    if (!facts.has_table) facts.error = platform::Os().threads->GetLastError();
    const SmbiosTable table(firmware.Bytes());
    facts.size = firmware.Size();
    facts.major = table.SMBIOSMajorVersion;
    facts.minor = table.SMBIOSMinorVersion;
  }
  const Systeminfo info;
  facts.manufacturer = info.manufacturer_;
  facts.product = info.productname_;
  facts.version = info.project_name_;
  facts.family = info.family_;
  facts.board_product = info.baseboard_product_;
  facts.by_family = info.project_name_.size() < kShortestName;
  const std::string& project = facts.by_family ? info.family_ : info.project_name_;
  facts.cs24 = IsCs24ProjectName(project);
  facts.key = facts.cs24 ? project : Cs25PlatformKey(project, info.baseboard_product_);
  facts.listed = IsListedPlatform(facts.key);
  for (const PlatformEntry& entry : platform_modem_map) {
    if (!EqualIgnoreCase(entry.key, facts.key)) continue;
    facts.allowed.insert(facts.allowed.end(), entry.hwids.begin(), entry.hwids.end());
  }
  return facts;
}

FccFacts InspectFcc() {
  FccFacts facts;
  const FirmwareTable firmware;
  if (!firmware.HasBuffer()) return facts;
  const SmbiosTable table(firmware.Bytes());
  const auto first = FindStructure(table, kFccType, 0);
  facts.structure = first.has_value();
  if (first) facts.length = first->length;
  const auto content = FindFccContent(table);
  facts.right_length = content.has_value();
  if (!content) return facts;
  facts.closed = content->closed;
  facts.content_length = content->length;
  for (const std::byte byte :
       table.Bytes(content->offset, std::min(content->length, kLongestContent))) {
    facts.content.push_back(std::to_integer<uint8_t>(byte));
  }
  facts.declared = IsFccContent(table, *content, platform::kFccMarker);
  return facts;
}

}  // namespace nuvelta::support
