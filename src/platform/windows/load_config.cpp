// The image load configuration, which this tool chain's runtime does not bring:
// the libraries that the executable names are loaded from the system folder only,
// and calls through pointers are guarded. Layout: IMAGE_LOAD_CONFIG_DIRECTORY64
// in the PE format's reference.
#include <cstdint>

namespace {

constexpr uint16_t kLoadFromSystem32Only = 0x800;  // LOAD_LIBRARY_SEARCH_SYSTEM32

struct LoadConfig {
  uint32_t Size;
  uint32_t TimeDateStamp;
  uint16_t MajorVersion;
  uint16_t MinorVersion;
  uint32_t GlobalFlagsClear;
  uint32_t GlobalFlagsSet;
  uint32_t CriticalSectionDefaultTimeout;
  uint64_t DeCommitFreeBlockThreshold;
  uint64_t DeCommitTotalFreeThreshold;
  uint64_t LockPrefixTable;
  uint64_t MaximumAllocationSize;
  uint64_t VirtualMemoryThreshold;
  uint64_t ProcessAffinityMask;
  uint32_t ProcessHeapFlags;
  uint16_t CSDVersion;
  uint16_t DependentLoadFlags;
  uint64_t EditList;
  const void* SecurityCookie;
  uint64_t SEHandlerTable;
  uint64_t SEHandlerCount;
  const void* GuardCFCheckFunctionPointer;
  const void* GuardCFDispatchFunctionPointer;
  const void* GuardCFFunctionTable;
  const void* GuardCFFunctionCount;
  const void* GuardFlags;  // 32 bits; what follows is never set
};

}  // namespace

// What the pointers lead to where the system does not check: nothing happens, or
// the call goes on to its target, which the compiler has left in rax.
__asm__(
    ".globl nuvelta_guard_check\n"
    "nuvelta_guard_check:\n"
    "  retq\n"
    ".globl nuvelta_guard_dispatch\n"
    "nuvelta_guard_dispatch:\n"
    "  jmpq *%rax\n");

extern "C" {
void nuvelta_guard_check();
void nuvelta_guard_dispatch();
// The system replaces both when it checks.
__attribute__((section(".00cfg"), used)) void (*__guard_check_icall_fptr)() = nuvelta_guard_check;
__attribute__((section(".00cfg"),
               used)) void (*__guard_dispatch_icall_fptr)() = nuvelta_guard_dispatch;
// Made by the linker.
extern void* __guard_fids_table[];
extern void* __guard_fids_count[];
extern void* __guard_flags[];
}

extern "C" {
extern const LoadConfig _load_config_used;
__attribute__((used)) const LoadConfig _load_config_used{
    .Size = sizeof(LoadConfig),
    .DependentLoadFlags = kLoadFromSystem32Only,
    .GuardCFCheckFunctionPointer = &__guard_check_icall_fptr,
    .GuardCFDispatchFunctionPointer = &__guard_dispatch_icall_fptr,
    .GuardCFFunctionTable = __guard_fids_table,
    .GuardCFFunctionCount = __guard_fids_count,
    .GuardFlags = __guard_flags,
};
}
