// A tiny image that keeps every rule, and with a macro defined breaks one. Nobody runs
// it: it is there to be checked.
#include <stdint.h>

__attribute__((dllimport)) uint32_t GetCurrentProcessId(void);
#ifdef UNKNOWN_FUNCTION
__attribute__((dllimport)) uint32_t GetNoSuchThing(void);
#endif

static uint32_t Stored(void) { return GetCurrentProcessId(); }
#ifdef NOTHING_STORED
#define g_stored Stored
#else
uint32_t (*volatile g_stored)(void) = Stored;
#endif

#ifdef HIDDEN_STORED
extern uint32_t (*volatile g_hidden)(void);  // in hidden.s
#endif
#ifdef HIDDEN_COMPUTED
uint64_t Hidden(void);
#endif

#ifdef BUILDERS_PATH
const volatile char g_path[] = "/home/builder/product/main.c";
#endif
#ifdef BUILDERS_WIDE_PATH
const volatile uint16_t g_wide_path[] = u"/home/builder/product/main.c";
#endif

#ifdef GUARDED
void Check(void) {}
__asm__(".globl Dispatch\nDispatch:\n  jmpq *%rax\n");
void Dispatch(void);
#ifndef GUARD_SECTION
#define GUARD_SECTION ".rdata"
#endif
__asm__(
    ".section " GUARD_SECTION "\n"
    ".globl __guard_check_icall_fptr\n__guard_check_icall_fptr: .quad Check\n"
    ".globl __guard_dispatch_icall_fptr\n__guard_dispatch_icall_fptr: .quad Dispatch\n.text\n");
extern uint64_t __guard_check_icall_fptr, __guard_dispatch_icall_fptr;
extern char __guard_fids_table[], __guard_fids_count[], __guard_flags[];
#endif

#ifndef LOAD_CONFIG_SIZE
#define LOAD_CONFIG_SIZE 0x94
#endif
#ifndef LOAD_FLAGS
#define LOAD_FLAGS 0x800
#endif
#ifndef NO_LOAD_CONFIG
extern const struct LoadConfig {
  uint32_t size;
  uint32_t unused[18];
  uint16_t unused_too;
  uint16_t load_flags;
  uint64_t not_guard[4];
  const void* guard[5];
} _load_config_used;
__attribute__((used)) const struct LoadConfig _load_config_used = {
    .size = LOAD_CONFIG_SIZE,
    .load_flags = LOAD_FLAGS,
#ifdef GUARDED
    .guard = {&__guard_check_icall_fptr, &__guard_dispatch_icall_fptr, __guard_fids_table,
              __guard_fids_count, __guard_flags},
#endif
};
#endif

#ifdef TLS_CALLBACK
extern uint64_t g_callbacks[];  // in hidden.s
uint32_t g_index;
__attribute__((used)) const uint64_t _tls_used[5] = {0, 0, (uint64_t)&g_index,
                                                     (uint64_t)g_callbacks, 0};
#endif

void Start(void) {
  g_stored();
#ifdef HIDDEN_STORED
  g_hidden();
#endif
#ifdef HIDDEN_COMPUTED
  Hidden();
#endif
#ifdef UNKNOWN_FUNCTION
  GetNoSuchThing();
#endif
}
