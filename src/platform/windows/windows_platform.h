// The ports on Win32 and the Windows Runtime. Each function answers the one
// object of its port, made on first use and never destroyed: threads of the
// service may still use it while the process ends.
#pragma once

#include "platform/platform.h"

namespace nuvelta::windows {

platform::Clock& WindowsClock();
platform::Devices& WindowsDevices();
platform::Environment& WindowsEnvironment();
platform::EventLog& WindowsEventLog();
platform::Files& WindowsFiles();
platform::Firmware& WindowsFirmware();
platform::Memory& WindowsMemory();
platform::MobileBroadband& WindowsMobileBroadbandPort();
platform::NetworkAdapters& WindowsNetworkAdapters();
platform::Registry& WindowsRegistry();
platform::ServiceControl& WindowsServiceControl();
platform::Sessions& WindowsSessions();
platform::SystemInformation& WindowsSystemInformation();
platform::Text& WindowsText();
platform::Threads& WindowsThreads();

// Installs all of them as the platform of this process.
void InstallWindowsPlatform();

}  // namespace nuvelta::windows
