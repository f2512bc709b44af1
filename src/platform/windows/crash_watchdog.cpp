#include "platform/windows/crash_watchdog.h"

#include <atomic>

#include "platform/windows/win32.h"

namespace nuvelta::windows {

namespace {

// Address space only; holds what each thread keeps for the filter, too.
constexpr SIZE_T kStackSize = 0x40000;

std::atomic<HANDLE> g_fault = nullptr;

// Three calls that go straight to the kernel: the heap, the loader and whatever else
// has locks may be what is broken. It looks at the event once, so that no later fault
// begins the time anew.
DWORD WINAPI Watch(void* fault) {
  WaitForSingleObject(fault, INFINITE);
  Sleep(kFaultPatienceMs);
  TerminateProcess(GetCurrentProcess(), kStuckExitCode);
  return 0;
}

}  // namespace

void StartCrashWatchdog() {
  if (g_fault != nullptr) return;
  const HANDLE fault = CreateEventA(nullptr, TRUE, FALSE, nullptr);
  if (fault == nullptr) return;
  const HANDLE thread =
      CreateThread(nullptr, kStackSize, Watch, fault, STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr);
  if (thread == nullptr) {
    CloseHandle(fault);
    return;
  }
  CloseHandle(thread);
  g_fault = fault;
}

void AlertCrashWatchdog() { SetEvent(g_fault); }

}  // namespace nuvelta::windows
