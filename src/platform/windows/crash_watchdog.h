// What ends a process that is stuck in the handling of a fault. Nobody answers a
// message box in session 0, and a dump that a process writes of itself may never get
// done; the service control manager recovers only a service whose process has ended.
// Facts: processthreadsapi.h and minidumpapiset.h reference pages.
#pragma once

#include <cstdint>

namespace nuvelta::windows {

// How long the handling of a fault may take, and the exit code of a process that took
// longer: the code of a std::terminate that nobody handled, plus one.
inline constexpr uint32_t kFaultPatienceMs = 30000;
inline constexpr uint32_t kStuckExitCode = 0xE06E7577;

// Starts the watchdog's thread, which sleeps until a fault. A second call does
// nothing; nor does one whose thread or event cannot be had, and a fault then ends as
// it ends without a watchdog. Not to be called by two threads at once.
void StartCrashWatchdog();

// A fault is being handled, on any thread: the process ends kFaultPatienceMs after the
// first call, if it has not ended by then. Takes no lock and no memory.
void AlertCrashWatchdog();

}  // namespace nuvelta::windows
