// The state that one service process has.
#pragma once

#include <atomic>
#include <cstdint>

#include "platform/types.h"

namespace nuvelta {

// Written by the service-main thread, read by the dispatcher's.
extern std::atomic<platform::StatusHandle> g_hServiceStatus;
extern std::atomic<platform::EventHandle> g_hServiceStopEvent;
// Kept for the life of the process, never unregistered.
extern std::atomic<platform::NotifyHandle> g_hSuspendResumeNotify;

// Makes everything process-wide afresh, as at the start of a process: logger,
// watcher, task manager and the globals of the service. No thread of the
// service may run.
void MakeProcessStateAfreshForSimulation();

}  // namespace nuvelta
