// What the virtual hardware puts in the place of the system's functions in the
// executable's import table. Each installs its own; to be called once, before the
// executable's first instruction.
#pragma once

#include <windows.h>

namespace nuvelta::wine {

void InstallThreadHooks();
void InstallClockHooks();
void InstallServiceHooks();
void InstallAnswerHooks();
void InstallPrefixHooks();
void InstallFaultHooks();
void InstallRuntimeFaultHooks();
void InstallCrashHooks();

// The service looks this one up when it needs it: what it is to find instead.
FARPROC SubstituteShellExecute(FARPROC original);

}  // namespace nuvelta::wine
