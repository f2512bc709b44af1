// Functions that the C++ runtime inside the executable calls too. Only what the
// service asks of them is counted, and can be refused by the story.
#include <windows.h>

#include <cstdlib>
#include <cstring>

#include "wine/hardware/hooks.h"
#include "wine/hardware/import_table.h"
#include "wine/hardware/played_story.h"

namespace nuvelta::wine {

namespace {

using NtQuery = LONG(NTAPI*)(ULONG, void*, ULONG, ULONG*);

decltype(&WideCharToMultiByte) g_narrow;
decltype(&MultiByteToWideChar) g_widen;
decltype(&std::getenv) g_variable;
decltype(&GetProcAddress) g_look_up;
NtQuery g_query;

// Unlike the service, the runtime wants to know what could not be converted.
int WINAPI Narrow(UINT page, DWORD flags, LPCWSTR wide, int wide_size, LPSTR narrow,
                  int narrow_size, LPCSTR fallback, BOOL* fallback_used) {
  if (page == CP_ACP && fallback_used == nullptr &&
      PlayedStory::Current()->Fails("WideCharToMultiByte")) {
    return 0;
  }
  return g_narrow(page, flags, wide, wide_size, narrow, narrow_size, fallback, fallback_used);
}

int WINAPI Widen(UINT page, DWORD flags, LPCSTR narrow, int narrow_size, LPWSTR wide,
                 int wide_size) {
  if (page == CP_ACP && flags == 0 && PlayedStory::Current()->Fails("MultiByteToWideChar"))
    return 0;
  return g_widen(page, flags, narrow, narrow_size, wide, wide_size);
}

// The service's only variable.
char* __cdecl Variable(const char* name) {
  const bool service_asks = _stricmp(name, "programdata") == 0;
  if (service_asks && PlayedStory::Current()->Fails("GetVariable")) return nullptr;
  return g_variable(name);
}

LONG NTAPI Query(ULONG information_class, void* information, ULONG size, ULONG* returned) {
  if (const auto fault = PlayedStory::Current()->Count("NtQuerySystemInformation")) {
    return static_cast<LONG>(fault->code);
  }
  return g_query(information_class, information, size, returned);
}

FARPROC WINAPI LookUp(HMODULE library, const char* name) {
  if (!IS_INTRESOURCE(name) && std::strcmp(name, "ShellExecuteExW") == 0) {
    return SubstituteShellExecute(g_look_up(library, name));
  }
  if (IS_INTRESOURCE(name) || std::strcmp(name, "NtQuerySystemInformation") != 0) {
    return g_look_up(library, name);
  }
  if (PlayedStory::Current()->Fails("LookUpNtQuerySystemInformation")) return nullptr;
  auto* const found = reinterpret_cast<void*>(g_look_up(library, name));
  g_query = reinterpret_cast<NtQuery>(found);
  return reinterpret_cast<FARPROC>(found == nullptr ? nullptr : reinterpret_cast<void*>(Query));
}

}  // namespace

void InstallRuntimeFaultHooks() {
  g_narrow = Replace("kernel32.dll", "WideCharToMultiByte", Narrow);
  g_widen = Replace("kernel32.dll", "MultiByteToWideChar", Widen);
  g_variable = Replace("msvcrt.dll", "getenv", Variable);
  g_look_up = Replace("kernel32.dll", "GetProcAddress", LookUp);
}

}  // namespace nuvelta::wine
