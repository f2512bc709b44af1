#include "notebook/model/play_action.h"

#include "notebook/model/event_data.h"
#include "platform/service_control.h"

namespace nuvelta::virtual_notebook {

namespace {

constexpr uint32_t kSessionLogon = 5;  // WTS_SESSION_LOGON

SentControl SessionChange(uint32_t event_type) {
  return {.control = platform::kServiceControlSessionChange, .event_type = event_type};
}

}  // namespace

void PlayAction(const Action& action, const ModemDescription& modem, ActionTarget& target) {
  using Kind = Action::Kind;
  switch (action.kind) {
    case Kind::kStart:
      return target.Start();
    case Kind::kStop:
      return target.Stop();
    case Kind::kKill:
      return target.Kill();
    case Kind::kControl:
      return target.SendControl({action.number, action.event_type, action.regardless});
    case Kind::kArrival:
      return target.SendDeviceEvent(platform::kDbtDeviceArrival, action.text);
    case Kind::kRemoval:
      return target.SendDeviceEvent(platform::kDbtDeviceRemoveComplete, action.text);
    case Kind::kModemArrives:
      target.InstallModem(modem);
      return target.SendDeviceEvent(platform::kDbtDeviceArrival, ModemInterface(modem));
    case Kind::kModemLeaves:
      target.RemoveModem();
      return target.SendDeviceEvent(platform::kDbtDeviceRemoveComplete, ModemInterface(modem));
    case Kind::kModemChanges:
      return target.ChangeModem(action.modem);
    case Kind::kAccountAdded:
      return target.ChangeAccounts(true);
    case Kind::kAccountRemoved:
      return target.ChangeAccounts(false);
    case Kind::kSuspend:
      return target.SendPowerEvent(platform::kPbtApmSuspend);
    case Kind::kResume:
      target.SendPowerEvent(platform::kPbtApmResumeAutomatic);
      return target.SendPowerEvent(platform::kPbtApmResumeSuspend);
    case Kind::kPowerEvent:
      return target.SendPowerEvent(action.number);
    case Kind::kSessionChange:
      return target.SendControl(SessionChange(action.number));
    case Kind::kLogon:
      target.WriteRecord({});
      return target.SendControl(SessionChange(kSessionLogon));
    case Kind::kBattery:
      return target.SendPowerSetting(platform::kGuidBatteryPercentageRemaining, action.number);
    case Kind::kPowerSetting:
      return target.SendPowerSetting(action.guid, action.number);
    case Kind::kRegistrySet:
      return target.SetRegistryValue(action.text, action.value_name, action.value);
    case Kind::kRegistryDelete:
      return target.DeleteRegistryValue(action.text, action.value_name);
    case Kind::kEventRecord:
      return target.WriteRecord(action.record);
  }
}

}  // namespace nuvelta::virtual_notebook
