#include "wine/hardware/crash.h"

#include <windows.h>

#include <dbghelp.h>

#include <atomic>

#include "wine/hardware/hooks.h"
#include "wine/hardware/import_table.h"
#include "wine/story/places.h"

namespace nuvelta::wine {

namespace {

decltype(&FatalAppExitW) g_fatal_exit;
decltype(&MiniDumpWriteDump) g_write_dump;
std::atomic<bool> g_hang_in_message = false;
std::atomic<bool> g_hang_in_dump = false;

// In real time; nobody is there to end it.
[[noreturn]] void Hang() {
  for (;;) Sleep(INFINITE);
}

void WINAPI FatalExit(UINT action, LPCWSTR message) {
  if (g_hang_in_message) Hang();
  g_fatal_exit(action, message);
}

BOOL WINAPI WriteDump(HANDLE process, DWORD id, HANDLE file, MINIDUMP_TYPE type,
                      MINIDUMP_EXCEPTION_INFORMATION* exception,
                      MINIDUMP_USER_STREAM_INFORMATION* streams,
                      MINIDUMP_CALLBACK_INFORMATION* callback) {
  if (g_hang_in_dump) Hang();
  return g_write_dump(process, id, file, type, exception, streams, callback);
}

// Wine lays the guard page of a stack at its very end, and ends a thread that gets there
// without a word. Windows has it above what the thread keeps for such an end; from there
// Wine does as Windows does.
void MoveGuardPage() {
  constexpr ULONG kPage = 4096;
  ULONG kept = 0;
  SetThreadStackGuarantee(&kept);
  ULONG_PTR low = 0;
  ULONG_PTR high = 0;
  GetCurrentThreadStackLimits(&low, &high);
  DWORD before = 0;
  VirtualProtect(reinterpret_cast<void*>(low + kPage + kept), kPage, PAGE_READWRITE | PAGE_GUARD,
                 &before);
}

// Looks at what the caller has on its stack, so that no compiler makes it a loop.
size_t Overflow(const volatile char* callers) {
  volatile char room[1024] = {};
  if (*callers != 0) return 0;
  return Overflow(room) + static_cast<size_t>(room[0]);
}

}  // namespace

bool PrepareCrash(const std::string& how) {
  if (how == kCrashByOverflow) {
    MoveGuardPage();
    const volatile char first = 0;
    Overflow(&first);
  }
  g_hang_in_message = how == kHangInMessage;
  g_hang_in_dump = how == kHangInDump;
  return !how.empty();
}

void InstallCrashHooks() {
  g_fatal_exit = Replace("kernel32.dll", "FatalAppExitW", FatalExit);
  g_write_dump = Replace("dbghelp.dll", "MiniDumpWriteDump", WriteDump);
}

}  // namespace nuvelta::wine
