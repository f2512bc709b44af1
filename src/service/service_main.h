// The shell of the service: process entry, service entry, status, controls.
#pragma once

#include <cstdint>

namespace nuvelta {

// The body of wmain, the whole life of the process on its main thread: installs the crash-dump
// writer, opens the log and hands the thread to the service dispatcher. Returns
// the process's exit code: 0 after the service has stopped, else the dispatcher's
// error (1063 when not started by the service control manager).
int ServiceProcessMain();

// The service's entry, on a thread that the service control manager starts.
void ServiceMain();

}  // namespace nuvelta
