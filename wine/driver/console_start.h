// The executable as somebody starts it who is not the service control manager.
#pragma once

#include <windows.h>

#include <filesystem>

namespace nuvelta::wine {

// Runs `executable` while the manager starts no service, waits for its end and
// answers its exit code. Throws std::runtime_error, also when the manager does not
// come to rest or the program has not ended after a minute, which ends it.
DWORD RunOnConsole(const std::filesystem::path& executable);

}  // namespace nuvelta::wine
