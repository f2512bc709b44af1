// Calls that are Wine's own, but can be refused by the story.
#include <direct.h>
#include <windows.h>

#include <setupapi.h>
#include <winver.h>

#include "wine/hardware/hooks.h"
#include "wine/hardware/import_table.h"
#include "wine/hardware/played_story.h"

namespace nuvelta::wine {

using virtual_notebook::KnownCall;

namespace {

// How a call that is refused answers.
template <class Result>
Result Failure(DWORD code) {
  SetLastError(code);
  return Result{};
}

// Registry functions answer the code itself.
template <>
LSTATUS Failure<LSTATUS>(DWORD code) {
  return static_cast<LSTATUS>(code);
}

// These answer all bits set.
HKEY NoKey(DWORD code) {
  SetLastError(code);
  return static_cast<HKEY>(INVALID_HANDLE_VALUE);
}
int MinusOne(DWORD code) {
  SetLastError(code);
  return -1;
}

// A function's stand-in: counts the call, and answers the failure that is due or
// what the function itself does. One for each name.
template <const KnownCall& kCall, class Function, auto kFailure>
struct StandIn;

template <const KnownCall& kCall, class Result, class... Arguments, Result (*kFailure)(DWORD)>
struct StandIn<kCall, Result WINAPI(Arguments...), kFailure> {
  static inline Result(WINAPI* original)(Arguments...) = nullptr;

  static Result WINAPI Call(Arguments... arguments) {
    if (const auto fault = PlayedStory::Current()->Count(kCall)) return kFailure(fault->code);
    return original(arguments...);
  }
};

template <const KnownCall& kCall, auto kFailure, class Result, class... Arguments>
void Refusable(const char* library, const char* name, Result(WINAPI* /*function*/)(Arguments...)) {
  using Stand = StandIn<kCall, Result WINAPI(Arguments...), kFailure>;
  Stand::original = Replace(library, name, Stand::Call);
}

#define NUVELTA_REFUSABLE(library, function, failure)           \
  do {                                                          \
    static constexpr KnownCall kCall = #function;               \
    Refusable<kCall, failure>(library, #function, &::function); \
  } while (false)

void InstallRegistryFaults() {
  NUVELTA_REFUSABLE("advapi32.dll", RegOpenKeyExW, Failure<LSTATUS>);
  NUVELTA_REFUSABLE("advapi32.dll", RegOpenKeyExA, Failure<LSTATUS>);
  NUVELTA_REFUSABLE("advapi32.dll", RegQueryValueExW, Failure<LSTATUS>);
  NUVELTA_REFUSABLE("advapi32.dll", RegQueryValueExA, Failure<LSTATUS>);
  NUVELTA_REFUSABLE("advapi32.dll", RegEnumKeyExA, Failure<LSTATUS>);
}

void InstallDeviceFaults() {
  NUVELTA_REFUSABLE("setupapi.dll", SetupDiEnumDeviceInfo, Failure<BOOL>);
  NUVELTA_REFUSABLE("setupapi.dll", SetupDiGetDeviceRegistryPropertyW, Failure<BOOL>);
  NUVELTA_REFUSABLE("setupapi.dll", SetupDiOpenClassRegKeyExW, NoKey);
  NUVELTA_REFUSABLE("advapi32.dll", EnumServicesStatusExW, Failure<BOOL>);
}

void InstallFileFaults() {
  NUVELTA_REFUSABLE("kernel32.dll", DeleteFileA, Failure<BOOL>);
  NUVELTA_REFUSABLE("msvcrt.dll", _mkdir, MinusOne);
}

void InstallSystemFaults() {
  NUVELTA_REFUSABLE("kernel32.dll", HeapAlloc, Failure<void*>);
  NUVELTA_REFUSABLE("kernel32.dll", LocalAlloc, Failure<HLOCAL>);
  NUVELTA_REFUSABLE("kernel32.dll", FileTimeToLocalFileTime, Failure<BOOL>);
  NUVELTA_REFUSABLE("kernel32.dll", FileTimeToSystemTime, Failure<BOOL>);
  NUVELTA_REFUSABLE("kernel32.dll", GetModuleFileNameW, Failure<DWORD>);
  NUVELTA_REFUSABLE("version.dll", GetFileVersionInfoSizeW, Failure<DWORD>);
  NUVELTA_REFUSABLE("version.dll", GetFileVersionInfoW, Failure<BOOL>);
  NUVELTA_REFUSABLE("version.dll", VerQueryValueW, Failure<BOOL>);
}

}  // namespace

void InstallFaultHooks() {
  InstallRegistryFaults();
  InstallDeviceFaults();
  InstallFileFaults();
  InstallSystemFaults();
}

}  // namespace nuvelta::wine
