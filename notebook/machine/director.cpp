// The director of a story: what happens to the notebook, and when.
#include <cstdio>
#include <string>

#include "notebook/machine/machine_parts.h"
#include "notebook/machine/virtual_machine.h"
#include "notebook/model/event_data.h"
#include "notebook/model/story_times.h"
#include "notebook/model/unicode.h"

namespace nuvelta::virtual_notebook {

void VirtualMachine::Direct() {
  Parts& parts = *m_parts;
  for (const Event& event : m_scenario.events) {
    for (uint32_t i = 0; i < event.repeat; ++i) {
      const Nanoseconds due = parts.start + event.at + i * event.every;
      if (due > parts.scheduler.Now()) {
        parts.scheduler.SleepUnlessCutShort(due - parts.scheduler.Now());
      }
      if (parts.scheduler.CutShort()) return CutShort();
      PlayEvent(event);
    }
  }
  const bool rested = parts.scheduler.WaitForRest(m_scenario.rest_within);
  if (parts.scheduler.CutShort()) return CutShort();
  if (!rested) Note(kDoesNotRest);
  EndStory();
}

// No more than the service's process is taken back.
void VirtualMachine::CutShort() {
  m_parts->scheduler.Change([&] { m_parts->over = m_parts->cut_short = true; });
  KillService(m_parts->current);
}

void VirtualMachine::PlayEvent(const Event& event) {
  Parts& parts = *m_parts;
  const Action& action = event.action;
  using Kind = Action::Kind;
  switch (action.kind) {
    case Kind::kStart:
      return StartService();
    case Kind::kStop:
    case Kind::kControl:
    case Kind::kSessionChange:
      return parts.service_control.SendControl(*ControlOf(action));
    case Kind::kKill:
      return KillService(parts.current);
    case Kind::kArrival:
      return parts.service_control.SendDeviceEvent(platform::kDbtDeviceArrival, action.text);
    case Kind::kRemoval:
      return parts.service_control.SendDeviceEvent(platform::kDbtDeviceRemoveComplete, action.text);
    case Kind::kModemArrives:
      parts.modem.SetPresent(true);
      parts.network.InstallModem();
      return parts.service_control.SendDeviceEvent(platform::kDbtDeviceArrival,
                                                   ModemInterface(parts.modem.Description()));
    case Kind::kModemLeaves:
      parts.modem.SetPresent(false);
      return parts.service_control.SendDeviceEvent(platform::kDbtDeviceRemoveComplete,
                                                   ModemInterface(parts.modem.Description()));
    case Kind::kModemChanges:
      return parts.modem.Apply(action.modem);
    case Kind::kAccountAdded:
      return parts.mobile_broadband.AddAccount();
    case Kind::kAccountRemoved:
      return parts.mobile_broadband.RemoveAccount();
    case Kind::kSuspend:
      return parts.service_control.SendPowerEvent(platform::kPbtApmSuspend);
    case Kind::kResume:
      parts.service_control.SendPowerEvent(platform::kPbtApmResumeAutomatic);
      return parts.service_control.SendPowerEvent(platform::kPbtApmResumeSuspend);
    case Kind::kPowerEvent:
      return parts.service_control.SendPowerEvent(action.number);
    case Kind::kLogon:
      parts.event_log.Write({}, parts.clock.time());
      return parts.service_control.SendControl(*ControlOf(action));
    case Kind::kBattery:
      return parts.service_control.SendPowerSetting(platform::kGuidBatteryPercentageRemaining,
                                                    action.number);
    case Kind::kPowerSetting:
      return parts.service_control.SendPowerSetting(action.guid, action.number);
    case Kind::kRegistrySet:
      return parts.registry.Set(action.text, action.value_name, action.value);
    case Kind::kRegistryDelete:
      return parts.registry.Delete(action.text, action.value_name);
    case Kind::kEventRecord:
      return parts.event_log.Write(action.record, parts.clock.time());
  }
}

// Stops the service and waits for its process to end. One that does not accept
// the control, or does not end, is ended from outside, and the story says so.
void VirtualMachine::EndStory() {
  Parts& parts = *m_parts;
  // A restart that is under way would begin a process that nobody ends.
  parts.scheduler.Change([&] { parts.over = true; });
  const uint32_t process = parts.current;
  if (process == 0) return;
  if (!m_scenario.stop_at_end) return KillService(process);
  if (!parts.service_control.SendLastStop()) {
    Note(kRefusesStop);
  } else if (!parts.scheduler.Wait(parts.ended, kStopPatience)) {
    parts.stuck = std::string(kDoesNotEnd) + ": " + parts.scheduler.DescribeWaiting(process);
  }
  KillService(process);
}

// The only command line that the notebook's command interpreter knows is the
// one by which a service restarts itself: taskkill, then net start.
void VirtualMachine::RunShell(const std::string& command_line) {
  Parts& parts = *m_parts;
  parts.scheduler.Change([&] { parts.launches.push_back(command_line); });
  unsigned process = 0;
  int parsed = 0;
  std::sscanf(command_line.c_str(), "cmd.exe /C taskkill /pid %u /f & net start \"%n", &process,
              &parsed);
  if (parsed == 0 || !command_line.ends_with('"')) {
    Note("cmd.exe: not a command line that this notebook knows: " + command_line);
    return;
  }
  const std::string service = command_line.substr(
      static_cast<size_t>(parsed), command_line.size() - static_cast<size_t>(parsed) - 1);
  parts.scheduler.Sleep(kTaskKill);
  KillService(process);
  parts.scheduler.Sleep(kNetStart);
  if (Folded(service) == Folded(m_scenario.notebook.service_key)) {
    StartService();
  } else {
    Note("net start: no service named \"" + service + "\"");
  }
}

}  // namespace nuvelta::virtual_notebook
