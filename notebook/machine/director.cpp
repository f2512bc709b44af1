// The director of a story: what happens to the notebook, and when.
#include <cstdio>
#include <string>

#include "notebook/machine/machine_parts.h"
#include "notebook/machine/virtual_machine.h"
#include "notebook/model/play_action.h"
#include "notebook/model/story_times.h"
#include "notebook/model/unicode.h"

namespace nuvelta::virtual_notebook {

// What the story's events are done to.
class VirtualMachine::Target final : public ActionTarget {
 public:
  explicit Target(VirtualMachine& machine) : m_machine(machine), m_parts(*machine.m_parts) {}

  void Start() override { m_machine.StartService(); }
  void Stop() override { SendControl({.control = platform::kServiceControlStop}); }
  void Kill() override { m_machine.KillService(m_parts.current); }
  void SendControl(const SentControl& sent) override { m_parts.service_control.SendControl(sent); }
  void SendDeviceEvent(uint32_t event_type, const std::string& interface_name) override {
    m_parts.service_control.SendDeviceEvent(event_type, interface_name);
  }
  void SendPowerEvent(uint32_t type) override { m_parts.service_control.SendPowerEvent(type); }
  void SendPowerSetting(const platform::Guid& setting, uint32_t data) override {
    m_parts.service_control.SendPowerSetting(setting, data);
  }
  void InstallModem(const ModemDescription& /*modem*/) override {
    m_parts.modem.SetPresent(true);
    m_parts.network.InstallModem();
  }
  void RemoveModem() override { m_parts.modem.SetPresent(false); }
  void ChangeModem(const Action::ModemChange& change) override { m_parts.modem.Apply(change); }
  void ChangeAccounts(bool added) override { m_parts.mobile_broadband.ChangeAccounts(added); }
  void WriteRecord(const EventRecord& record) override {
    m_parts.event_log.Write(record, m_parts.clock.time());
  }
  void SetRegistryValue(const std::string& key, const std::string& name,
                        const RegistryValue& value) override {
    m_parts.registry.Set(key, name, value);
  }
  void DeleteRegistryValue(const std::string& key, const std::string& name) override {
    m_parts.registry.Delete(key, name);
  }

 private:
  VirtualMachine& m_machine;
  Parts& m_parts;
};

// Up to the visit, if one comes before the last of them.
void VirtualMachine::PlayEvents() {
  Parts& parts = *m_parts;
  Target target(*this);
  const std::optional<Nanoseconds> last =
      m_visit.at ? std::optional(parts.start + *m_visit.at) : std::nullopt;
  for (const Event& event : m_scenario.events) {
    for (uint32_t i = 0; i < event.repeat; ++i) {
      const Nanoseconds due = parts.start + event.at + i * event.every;
      if (last && due > *last) return;
      if (due > parts.scheduler.Now()) {
        parts.scheduler.SleepUnlessCutShort(due - parts.scheduler.Now());
      }
      if (parts.scheduler.CutShort()) return;
      PlayAction(event.action, parts.modem.Description(), target);
    }
  }
}

void VirtualMachine::Direct() {
  Parts& parts = *m_parts;
  PlayEvents();
  if (m_visit.body && m_visit.at) {
    const Nanoseconds due = parts.start + *m_visit.at;
    if (due > parts.scheduler.Now())
      parts.scheduler.SleepUnlessCutShort(due - parts.scheduler.Now());
    return parts.scheduler.CutShort() ? CutShort() : Receive();
  }
  if (parts.scheduler.CutShort()) return CutShort();
  const bool rested = parts.scheduler.WaitForRest(m_scenario.rest_within);
  if (parts.scheduler.CutShort()) return CutShort();
  if (!rested) Note(kDoesNotRest);
  if (m_visit.body) return Receive();
  EndStory();
}

// The visitor's process, behind which the story is over.
void VirtualMachine::Receive() {
  constexpr uint32_t kVisitor = 0x2F00;
  Parts& parts = *m_parts;
  parts.inspection.Tell(parts.service_control.Running());
  parts.scheduler.Change([&] { parts.over = true; });
  KillService(parts.current);
  parts.scheduler.Change([&] { parts.ended.ended = false; });
  parts.scheduler.Spawn("visitor", kVisitor, [&] {
    parts.files.BeginProcess(parts.log_folder);
    m_visit.body();
    parts.scheduler.KillProcess(kVisitor);
    parts.scheduler.AwaitLastOfProcess(kVisitor);
    parts.EndProcess();
    parts.scheduler.Change([&] { parts.ended.ended = true; });
  });
  parts.scheduler.Wait(parts.ended, std::nullopt);
}

// No more than the service's process is taken back.
void VirtualMachine::CutShort() {
  m_parts->scheduler.Change([&] { m_parts->over = m_parts->cut_short = true; });
  KillService(m_parts->current);
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
