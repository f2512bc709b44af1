// The virtual hardware's entry: the system loads it with the executable, in the
// place of the library of its name.
#include <windows.h>

#include "wine/hardware/hooks.h"
#include "wine/hardware/played_story.h"

// Only the import table is changed here; the story is read when the first call
// comes, for no file may be parsed and no thread be made under the loader's lock.
BOOL WINAPI DllMain(HINSTANCE /*library*/, DWORD reason, void* /*reserved*/) {
  if (reason != DLL_PROCESS_ATTACH || !nuvelta::wine::PlayedStory::HasStory()) return TRUE;
  nuvelta::wine::InstallThreadHooks();
  nuvelta::wine::InstallClockHooks();
  nuvelta::wine::InstallServiceHooks();
  nuvelta::wine::InstallAnswerHooks();
  nuvelta::wine::InstallPrefixHooks();
  nuvelta::wine::InstallFaultHooks();
  nuvelta::wine::InstallRuntimeFaultHooks();
  nuvelta::wine::InstallCrashHooks();
  return TRUE;
}
