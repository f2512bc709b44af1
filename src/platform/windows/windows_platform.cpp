#include "platform/windows/windows_platform.h"

#include "platform/windows/win32.h"
#include "platform/windows/winrt/windows_mobile_broadband.h"

namespace nuvelta::windows {

platform::MobileBroadband& WindowsMobileBroadbandPort() {
  return Immortal<WindowsMobileBroadband>();
}

void InstallWindowsPlatform() {
  static const platform::Platform platform{.clock = &WindowsClock(),
                                           .devices = &WindowsDevices(),
                                           .environment = &WindowsEnvironment(),
                                           .event_log = &WindowsEventLog(),
                                           .files = &WindowsFiles(),
                                           .firmware = &WindowsFirmware(),
                                           .memory = &WindowsMemory(),
                                           .mobile_broadband = &WindowsMobileBroadbandPort(),
                                           .network = &WindowsNetworkAdapters(),
                                           .registry = &WindowsRegistry(),
                                           .service_control = &WindowsServiceControl(),
                                           .sessions = &WindowsSessions(),
                                           .system_information = &WindowsSystemInformation(),
                                           .text = &WindowsText(),
                                           .threads = &WindowsThreads()};
  platform::Install(&platform);
}

}  // namespace nuvelta::windows
