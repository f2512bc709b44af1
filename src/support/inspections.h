// The doctor's steps beside the rehearsal: each looks at one matter as the service finds it.
#pragma once

#include <string>
#include <vector>

#include "platform/types.h"
#include "support/diagnosis.h"

namespace nuvelta::support {

ServiceFacts InspectService();
LogFolderFacts InspectLogFolder();
std::vector<SwitchFacts> InspectSwitches();
FirmwareFacts InspectFirmware();
FccFacts InspectFcc();
AdapterListFacts InspectAdapters();
DeviceListFacts InspectDevices();
// Without a session or command.
ModemFacts InspectModem();

// Local time, "2026-11-16 00:58:46".
std::string LocalTime(int64_t seconds);
std::string LocalTime(platform::FileTime time);

}  // namespace nuvelta::support
