// A program of the prefix, run to its end.
#pragma once

#include <string>

#include "wine/driver/win32.h"

namespace nuvelta::wine {

// Runs `command` in this program's folder with the variables of `environment`, this program's
// when null, and answers its exit code. Throws std::runtime_error when it cannot be started, or
// has not ended after `patience` milliseconds, which ends it.
DWORD RunToItsEnd(std::wstring command, void* environment, STARTUPINFOW startup, DWORD patience);

}  // namespace nuvelta::wine
