// What ends the process when nobody handles an exception.
// Facts: errhandlingapi.h, minidumpapiset.h reference pages.
#pragma once

namespace nuvelta::windows {

// Makes every unhandled exception, on any thread, a minidump beside the program,
// named by a fresh GUID, and then the end of the process. Nothing is logged and
// every failure on that way is ignored.
void InstallCrashDumpWriter();

}  // namespace nuvelta::windows
