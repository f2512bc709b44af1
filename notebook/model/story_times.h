// What the operating system takes in a story for more than a call of the service's;
// port_calls.h has those.
#pragma once

#include <chrono>

namespace nuvelta::virtual_notebook {

// From a process's begin to its main function.
inline constexpr std::chrono::milliseconds kProcessStart{20};
// From the account watcher's start until it knows all accounts.
inline constexpr std::chrono::milliseconds kAccountEnumeration{30};
// The command interpreter with taskkill, and then with net start.
inline constexpr std::chrono::milliseconds kTaskKill{120};
inline constexpr std::chrono::milliseconds kNetStart{80};
// The end of a story waits so long for the service that it has stopped.
inline constexpr std::chrono::seconds kStopPatience{60};

}  // namespace nuvelta::virtual_notebook
