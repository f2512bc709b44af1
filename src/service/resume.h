// Suspend and resume: tells a quick boot from a resume out of sleep and starts
// the authentication again after either.
#pragma once

#include <cstdint>
#include <span>

namespace nuvelta {

// DEVICE_NOTIFY_CALLBACK_ROUTINE: runs on a thread of the system, one event
// after the other. `type` is the power broadcast event (PBT_*). Always returns 1.
uint32_t PowerChanged(void* context, uint32_t type, const void* setting);

// Finds the newest logon notification in the Application event log: its local
// time as text (at least 20 bytes) and its seconds since 1970. True when there is
// one; false with a time seven days back when there is none, or with both outputs
// untouched when the log cannot be opened. Defined in logon_time.cpp.
bool getLastLogTime(std::span<char> timeText, int64_t& logonTime);

// Forgets the last suspend, as at the start of a process.
void MakeSuspendTimeAfreshForSimulation();

}  // namespace nuvelta
