#include "wine/hardware/import_table.h"

#include <windows.h>

#include <cstdint>
#include <cstring>

namespace nuvelta::wine {

namespace {

template <class Type>
Type* At(uint8_t* base, uint32_t offset) {
  return reinterpret_cast<Type*>(base + offset);
}

void* Write(void** slot, void* value) {
  DWORD before = 0;
  VirtualProtect(slot, sizeof *slot, PAGE_READWRITE, &before);
  void* const old = *slot;
  *slot = value;
  VirtualProtect(slot, sizeof *slot, before, &before);
  return old;
}

// The slot of a function in one library's part of the table.
void** FindSlot(uint8_t* base, const IMAGE_IMPORT_DESCRIPTOR& part, const char* function) {
  const auto* name = At<IMAGE_THUNK_DATA64>(base, part.OriginalFirstThunk);
  auto* slot = At<void*>(base, part.FirstThunk);
  for (; name->u1.AddressOfData != 0; ++name, ++slot) {
    if (IMAGE_SNAP_BY_ORDINAL64(name->u1.Ordinal)) continue;
    const auto* import =
        At<IMAGE_IMPORT_BY_NAME>(base, static_cast<uint32_t>(name->u1.AddressOfData));
    if (std::strcmp(reinterpret_cast<const char*>(import->Name), function) == 0) return slot;
  }
  return nullptr;
}

}  // namespace

void* ReplaceImport(const char* library, const char* function, void* replacement) {
  auto* const base = reinterpret_cast<uint8_t*>(GetModuleHandleW(nullptr));
  const auto* dos = At<IMAGE_DOS_HEADER>(base, 0);
  const auto* header = At<IMAGE_NT_HEADERS64>(base, static_cast<uint32_t>(dos->e_lfanew));
  const IMAGE_DATA_DIRECTORY& table =
      header->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
  for (const auto* part = At<IMAGE_IMPORT_DESCRIPTOR>(base, table.VirtualAddress); part->Name != 0;
       ++part) {
    if (_stricmp(At<char>(base, part->Name), library) != 0) continue;
    if (void** const slot = FindSlot(base, *part, function)) return Write(slot, replacement);
  }
  return nullptr;
}

}  // namespace nuvelta::wine
