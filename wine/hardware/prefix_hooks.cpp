// What the Wine prefix itself shows the service, made fit for the story.
#include <windows.h>

#include <roapi.h>
#include <setupapi.h>

#include "wine/hardware/hooks.h"
#include "wine/hardware/import_table.h"
#include "wine/hardware/last_error.h"
#include "wine/hardware/played_story.h"
#include "wine/hardware/windows_time.h"

namespace nuvelta::wine {

namespace {

decltype(&SetupDiGetClassDevsW) g_get_devices;
decltype(&RoGetActivationFactory) g_get_factory;
decltype(&FindFirstFileA) g_find_first;
decltype(&FindNextFileA) g_find_next;

// Only the story's devices (wine_devices.h), not those that Wine has made for
// itself.
HDEVINFO WINAPI Devices(const GUID* device_class, LPCWSTR /*enumerator*/, HWND window,
                        DWORD flags) {
  if (PlayedStory::Current()->Fails("SetupDiGetClassDevsW")) return INVALID_HANDLE_VALUE;
  return g_get_devices(device_class, L"NUVELTASTORY", window, flags);
}

// Wine's search for a class leaves an error behind although it succeeds.
HRESULT WINAPI Factory(HSTRING name, REFIID id, void** factory) {
  const KeepLastError keep;
  return g_get_factory(name, id, factory);
}

// Files are stamped with real time, which may be ahead of the story's; in the
// story no file comes from the future.
void AgeNothingAhead(WIN32_FIND_DATAA& found) {
  const FILETIME now = FileTimeOf(PlayedStory::Current()->WallClock());
  for (FILETIME* time : {&found.ftCreationTime, &found.ftLastAccessTime, &found.ftLastWriteTime}) {
    if (CompareFileTime(time, &now) > 0) *time = now;
  }
}

HANDLE WINAPI FindFirst(LPCSTR pattern, WIN32_FIND_DATAA* found) {
  if (PlayedStory::Current()->Fails("FindFirstFileA")) return INVALID_HANDLE_VALUE;
  const HANDLE search = g_find_first(pattern, found);
  if (search != INVALID_HANDLE_VALUE) AgeNothingAhead(*found);
  return search;
}

BOOL WINAPI FindNext(HANDLE search, WIN32_FIND_DATAA* found) {
  if (PlayedStory::Current()->Fails("FindNextFileA")) return FALSE;
  const BOOL more = g_find_next(search, found);
  if (more != FALSE) AgeNothingAhead(*found);
  return more;
}

}  // namespace

void InstallPrefixHooks() {
  g_get_devices = Replace("setupapi.dll", "SetupDiGetClassDevsW", Devices);
  g_get_factory = Replace("api-ms-win-core-winrt-l1-1-0.dll", "RoGetActivationFactory", Factory);
  g_find_first = Replace("kernel32.dll", "FindFirstFileA", FindFirst);
  g_find_next = Replace("kernel32.dll", "FindNextFileA", FindNext);
}

}  // namespace nuvelta::wine
