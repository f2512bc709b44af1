// The executable's clocks show story time.
#include <windows.h>

#include <cstring>
#include <ctime>

#include "wine/hardware/hooks.h"
#include "wine/hardware/import_table.h"
#include "wine/hardware/played_story.h"
#include "wine/hardware/story_clock.h"
#include "wine/hardware/windows_time.h"

namespace nuvelta::wine {

namespace {

using std::chrono::duration_cast;

decltype(&GetProcAddress) g_look_up;

void WINAPI SystemTime(FILETIME* time) { *time = FileTimeOf(PlayedStory::Current()->WallClock()); }

// The C++ runtime asks for the more precise clock by its name, as not every
// Windows has it.
FARPROC WINAPI LookUp(HMODULE library, const char* name) {
  if (!IS_INTRESOURCE(name) && std::strcmp(name, "GetSystemTimePreciseAsFileTime") == 0) {
    return reinterpret_cast<FARPROC>(reinterpret_cast<void*>(SystemTime));
  }
  return g_look_up(library, name);
}

__time64_t __cdecl Time(__time64_t* time) {
  const auto seconds =
      std::chrono::floor<std::chrono::seconds>(PlayedStory::Current()->WallClock());
  if (time != nullptr) *time = seconds.count();
  return seconds.count();
}

// Milliseconds since the process began.
clock_t __cdecl Clock() {
  const Duration passed = StoryClock::Get().Now() - PlayedStory::Current()->ProcessBegan();
  return static_cast<clock_t>(duration_cast<std::chrono::milliseconds>(passed).count());
}

}  // namespace

void InstallClockHooks() {
  Replace("kernel32.dll", "GetSystemTimeAsFileTime", SystemTime);
  g_look_up = Replace("kernel32.dll", "GetProcAddress", LookUp);
  Replace("msvcrt.dll", "_time64", Time);
  Replace("msvcrt.dll", "clock", Clock);
}

}  // namespace nuvelta::wine
