// Status reports to the service control manager.
#pragma once

#include <cstdint>

namespace nuvelta {

// Sets the record's constant members; before the first report.
void InitServiceStatus();

// Reports `currentState` (SERVICE_*) with `waitHintMs` milliseconds. The second
// argument is ignored: [fixed] the exit code is always reported as 0. The reports
// come from two threads without a lock.
void ReportServiceStatus(uint32_t currentState, uint32_t win32ExitCode, uint32_t waitHintMs);

// The record and the check-point counter as at the start of a process.
void MakeStatusAfreshForSimulation();

}  // namespace nuvelta
