// What ends the process when nobody handles an exception.
// Facts: errhandlingapi.h, minidumpapiset.h, processthreadsapi.h reference pages.
#pragma once

namespace nuvelta::windows {

// Makes every unhandled exception, on any thread, a minidump beside the program,
// named by a fresh GUID, and then the end of the process. Nothing is logged and
// every failure on that way is ignored; a process that is stuck on it is ended by the
// watchdog (crash_watchdog.h). Every thread that starts after this program's libraries
// are loaded keeps some of its stack for that way, so that one whose stack overflows
// gets there too. A second call changes nothing.
void InstallCrashDumpWriter();

}  // namespace nuvelta::windows
