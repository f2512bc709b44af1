#include "platform/memory.h"
#include "platform/windows/win32.h"
#include "platform/windows/windows_platform.h"

namespace nuvelta::windows {

namespace {

class Win32Memory final : public platform::Memory {
 public:
  void* HeapAlloc(size_t bytes) override { return ::HeapAlloc(GetProcessHeap(), 0, bytes); }
  void HeapFree(void* block) noexcept override { ::HeapFree(GetProcessHeap(), 0, block); }
  void* LocalAlloc(size_t bytes) override { return ::LocalAlloc(LPTR, bytes); }
  void LocalFree(void* block) noexcept override { ::LocalFree(block); }
};

}  // namespace

platform::Memory& WindowsMemory() { return Immortal<Win32Memory>(); }

}  // namespace nuvelta::windows
