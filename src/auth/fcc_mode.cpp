#include <algorithm>
#include <array>

#include "auth/firmware_table.h"
#include "auth/smbios.h"
#include "auth/systeminfo.h"
#include "common/logger.h"
#include "platform/fcc_marker.h"

namespace nuvelta {

namespace {

constexpr const char* kIsFccMode = "Systeminfo::isFccMode";
constexpr size_t kContentTextSize = 512;

void LogContent(const SmbiosTable& table, const FccContent& content) {
  std::array<char, kContentTextSize> szoembuf{};
  const auto bytes = table.Bytes(content.offset, std::min(content.length, szoembuf.size() - 1));
  std::ranges::transform(bytes, szoembuf.begin(),
                         [](std::byte byte) { return static_cast<char>(byte); });
  LogInfo(kIsFccMode, "szoembuf string_buf:%s, length:%d \n", szoembuf.data(),
          static_cast<int>(content.length));
}

}  // namespace

bool Systeminfo::isFccMode() {
  const FirmwareTable firmware;
  if (!firmware.HasBuffer()) return false;
  const SmbiosTable table(firmware.Bytes());
  LogInfo(kIsFccMode, "smBiosDataSize:%d, bytesWritten:%d smBiosData->Length:%d \n",
          static_cast<int>(firmware.Size()), static_cast<int>(firmware.Written()),
          static_cast<int>(table.Length));
  const auto content = FindFccContent(table);
  if (!content) return false;
  LogContent(table, *content);
  if (!IsFccContent(table, *content, platform::kFccMarker)) return false;
  LogInfo(kIsFccMode, "Authentica  TRUE");
  return true;
}

}  // namespace nuvelta
