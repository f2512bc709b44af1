#include <algorithm>
#include <array>

#include "auth/smbios.h"
#include "auth/systeminfo.h"
#include "common/logger.h"
#include "common/scope_exit.h"
#include "platform/fcc_marker.h"
#include "platform/firmware.h"
#include "platform/memory.h"
#include "platform/platform.h"

namespace nuvelta {

namespace {

constexpr const char* kName = "Systeminfo::isFccMode";
constexpr size_t kContentTextSize = 512;

void LogContent(const SmbiosTable& table, const FccContent& content) {
  std::array<char, kContentTextSize> szoembuf{};
  const auto bytes = table.Bytes(content.offset, std::min(content.length, szoembuf.size() - 1));
  std::ranges::transform(bytes, szoembuf.begin(),
                         [](std::byte byte) { return static_cast<char>(byte); });
  LogInfo(kName, "szoembuf string_buf:%s, length:%d \n", szoembuf.data(),
          static_cast<int>(content.length));
}

}  // namespace

bool Systeminfo::isFccMode() {
  platform::Firmware& firmware = *platform::Os().firmware;
  platform::Memory& memory = *platform::Os().memory;
  const uint32_t size =
      firmware.GetSystemFirmwareTable(platform::kFirmwareProviderRsmb, 0, nullptr, 0);
  if (size == 0) return false;
  auto* buffer = static_cast<std::byte*>(memory.HeapAlloc(size));
  if (buffer == nullptr) return false;
  const ScopeExit free([&] { memory.HeapFree(buffer); });
  const uint32_t written =
      firmware.GetSystemFirmwareTable(platform::kFirmwareProviderRsmb, 0, buffer, size);
  // A count above the size means that the table has grown and nothing was copied.
  const SmbiosTable table({buffer, written <= size ? written : 0});
  LogInfo(kName, "smBiosDataSize:%d, bytesWritten:%d smBiosData->Length:%d \n",
          static_cast<int>(size), static_cast<int>(written), static_cast<int>(table.Length));
  const auto content = FindFccContent(table);
  if (!content) return false;
  LogContent(table, *content);
  if (!IsFccContent(table, *content, platform::kFccMarker)) return false;
  LogInfo(kName, "Authentica  TRUE");
  return true;
}

}  // namespace nuvelta
