#include "wine/driver/handle_count.h"

#include "wine/driver/win32.h"

#include <winternl.h>

#include <vector>

namespace nuvelta::wine {

namespace {

// As in SYSTEM_HANDLE_INFORMATION, of which no header tells.
struct HandleEntry {
  ULONG owner;
  UCHAR type;
  UCHAR flags;
  USHORT value;
  void* object;
  ACCESS_MASK access;
};
struct HandleTable {
  ULONG count;
  HandleEntry entries[1];
};

constexpr auto kSystemHandleInformation = static_cast<SYSTEM_INFORMATION_CLASS>(16);
constexpr NTSTATUS kLengthMismatch = static_cast<NTSTATUS>(0xC0000004);

}  // namespace

std::optional<uint32_t> CountHandles(uint32_t id) {
  std::vector<HandleEntry> room(4096);
  for (;;) {
    const auto size = static_cast<ULONG>(room.size() * sizeof(HandleEntry));
    ULONG needed = 0;
    const NTSTATUS status =
        NtQuerySystemInformation(kSystemHandleInformation, room.data(), size, &needed);
    if (status == kLengthMismatch) {
      room.resize(room.size() * 2);
      continue;
    }
    if (status != 0) return {};
    const auto* table = reinterpret_cast<const HandleTable*>(room.data());
    uint32_t handles = 0;
    for (ULONG i = 0; i < table->count; ++i) {
      if (table->entries[i].owner == id) ++handles;
    }
    return handles;
  }
}

}  // namespace nuvelta::wine
