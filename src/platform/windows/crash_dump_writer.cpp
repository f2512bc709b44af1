#include "platform/windows/crash_dump_writer.h"

#include <array>
#include <atomic>
#include <cwchar>
#include <exception>

#include "platform/windows/crash_watchdog.h"
#include "platform/windows/win32.h"

#include <dbghelp.h>
#include <objbase.h>

namespace nuvelta::windows {

namespace {

constexpr size_t kPathSize = 260;
constexpr size_t kNameSize = 512;
constexpr UINT kAction = 0xFFFFFFFF;
// The exception that stands for a call of std::terminate: "nuv" in its low bytes.
constexpr DWORD kTerminated = 0xE06E7576;
// What is left of a thread's stack to the filter when the rest has overflowed: the
// filter's own two path buffers and the dump writer below it, whose need no document
// names. A sixteenth of the smallest stack that a thread here gets by default.
constexpr ULONG kFilterStack = 64 * 1024;

// "3F2504E0-4F89-11D3-9A0C-0305E82C3301.dmp". Without a GUID the name is of
// zeros: one dump is better than none.
void FormatName(std::array<wchar_t, kNameSize>& name) {
  GUID id{};
  if (FAILED(CoCreateGuid(&id))) id = {};
  std::swprintf(name.data(), name.size(), L"%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X.dmp",
                static_cast<unsigned>(id.Data1), id.Data2, id.Data3, id.Data4[0], id.Data4[1],
                id.Data4[2], id.Data4[3], id.Data4[4], id.Data4[5], id.Data4[6], id.Data4[7]);
}

// All on the stack: the heap may be what is broken.
void WriteDump(EXCEPTION_POINTERS* exception) {
  std::array<wchar_t, kPathSize + kNameSize> path{};
  GetModuleFileNameW(nullptr, path.data(), kPathSize);
  wchar_t* const last = std::wcsrchr(path.data(), L'\\');
  if (last == nullptr) return;
  std::array<wchar_t, kNameSize> name{};
  FormatName(name);
  std::wcscpy(last + 1, name.data());
  const HANDLE file = CreateFileW(path.data(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                  FILE_ATTRIBUTE_NORMAL, nullptr);
  MINIDUMP_EXCEPTION_INFORMATION information{
      .ThreadId = GetCurrentThreadId(), .ExceptionPointers = exception, .ClientPointers = TRUE};
  MiniDumpWriteDump(GetCurrentProcess(), GetCurrentProcessId(), file, MiniDumpNormal, &information,
                    nullptr, nullptr);
  CloseHandle(file);
}

// The thread that is writing its dump. A fault of the writer itself, which a broken
// process may well cause, comes here again: without this, dump would follow dump
// until the disk is full.
std::atomic<DWORD> g_writer = 0;

LONG WINAPI WriteDumpAndEnd(EXCEPTION_POINTERS* exception) {
  AlertCrashWatchdog();
  const DWORD thread = GetCurrentThreadId();
  if (g_writer.exchange(thread) != thread) WriteDump(exception);
  FatalAppExitW(kAction, L"Fatal Error");
  return 0;
}

// An exception that meets a function which must not throw ends in std::terminate
// and not at the filter; this leads it there.
[[noreturn]] void RaiseTerminated() {
  for (;;) RaiseException(kTerminated, EXCEPTION_NONCONTINUABLE, 0, nullptr);
}

// The handler of std::terminate is one for each thread in the Microsoft run-time, and
// one for all in the others, which are told the same again.
void PrepareThread() {
  ULONG size = kFilterStack;
  SetThreadStackGuarantee(&size);
  std::set_terminate(RaiseTerminated);
}

// The loader calls it at the start of every thread but the first: of the service's own
// as of those that the log library, the control manager and the system start in it.
void NTAPI PrepareEachThread(void* /*image*/, DWORD reason, void* /*reserved*/) {
  if (reason == DLL_THREAD_ATTACH) PrepareThread();
}

}  // namespace

void InstallCrashDumpWriter() {
  SetUnhandledExceptionFilter(WriteDumpAndEnd);
  PrepareThread();
  StartCrashWatchdog();
}

}  // namespace nuvelta::windows

// An entry of the image's table of TLS callbacks, which the linker puts together from
// the sections .CRT$XLA to .CRT$XLZ. Facts: ".tls Section" in the PE format's reference.
#ifdef _MSC_VER
#pragma comment(linker, "/INCLUDE:_tls_used")
#pragma comment(linker, "/INCLUDE:nuvelta_prepare_each_thread")
#pragma section(".CRT$XLN", read)
#define NUVELTA_TLS_CALLBACK __declspec(allocate(".CRT$XLN"))
#else
#define NUVELTA_TLS_CALLBACK __attribute__((section(".CRT$XLN"), used))
#endif

extern "C" {
extern const PIMAGE_TLS_CALLBACK nuvelta_prepare_each_thread;
NUVELTA_TLS_CALLBACK const PIMAGE_TLS_CALLBACK nuvelta_prepare_each_thread =
    nuvelta::windows::PrepareEachThread;
}
