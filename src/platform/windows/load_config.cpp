// The image load configuration, which this tool chain's runtime does not bring:
// the libraries that the executable names are loaded from the system folder only.
// Control flow guard is off: the runtime's objects do not say which functions they
// take the address of, and Windows ends a process that calls one through a pointer
// when the guard's table lacks it. Layout: IMAGE_LOAD_CONFIG_DIRECTORY64 in the PE
// format's reference, up to the guard's flags; that size has shipped since Windows
// 8.1, and all that is not named here is zero.
#include <cstddef>
#include <cstdint>

namespace {

constexpr uint16_t kLoadFromSystem32Only = 0x800;  // LOAD_LIBRARY_SEARCH_SYSTEM32

struct LoadConfig {
  uint32_t Size;
  uint32_t Unused[18];
  uint16_t CSDVersion;
  uint16_t DependentLoadFlags;
  uint64_t EditList;
  uint64_t SecurityCookie;
  uint64_t SEHandlerTable;
  uint64_t SEHandlerCount;
  uint64_t GuardCFCheckFunctionPointer;
  uint64_t GuardCFDispatchFunctionPointer;
  uint64_t GuardCFFunctionTable;
  uint64_t GuardCFFunctionCount;
  uint32_t GuardFlags;
};
constexpr uint32_t kSize = offsetof(LoadConfig, GuardFlags) + sizeof(LoadConfig::GuardFlags);
static_assert(offsetof(LoadConfig, DependentLoadFlags) == 0x4E && kSize == 0x94);

}  // namespace

// The name by which the linker finds it.
extern "C" {
extern const LoadConfig _load_config_used;
__attribute__((used)) const LoadConfig _load_config_used{
    .Size = kSize,
    .DependentLoadFlags = kLoadFromSystem32Only,
};
}
