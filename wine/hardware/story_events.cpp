#include "wine/hardware/story_events.h"

#include <windows.h>

#include <exception>
#include <memory>

#include "notebook/model/event_data.h"
#include "notebook/model/story_report.h"
#include "notebook/model/story_times.h"
#include "platform/service_control.h"
#include "wine/hardware/control_queue.h"
#include "wine/hardware/director.h"
#include "wine/hardware/machine.h"
#include "wine/hardware/power_queue.h"
#include "wine/story/story_line.h"

namespace nuvelta::wine {

namespace {

using virtual_notebook::Action;
using virtual_notebook::ModemInterface;

class StoryEvents {
 public:
  StoryEvents(Machine& machine, size_t next)
      : m_machine(machine), m_occurrences(Occurrences(machine.Scenario())), m_next(next) {}

  std::optional<Duration> Next() const {
    if (m_next >= m_occurrences.size()) return std::nullopt;
    return m_occurrences[m_next].at;
  }

  Duration Rest() const {
    return m_machine.Scenario().rest_within +
           (m_occurrences.empty() ? Duration() : m_occurrences.back().at);
  }

  void Play();
  void End(bool rests);

 private:
  void PlayAction(const Action& action);
  void ChangeDevices(size_t index);
  void Stop();
  void SendControl(const Action& action);
  void SendPowerSetting(const platform::Guid& setting, uint32_t data);
  void Refuse(uint32_t control, uint32_t event_type, std::optional<uint32_t> error);
  void Ask(Request::Kind kind);
  void Write(const char* text) { m_machine.Write(Note{text}); }

  Machine& m_machine;
  const std::vector<Occurrence> m_occurrences;
  size_t m_next;
};

void StoryEvents::Play() {
  const Occurrence occurrence = m_occurrences[m_next++];
  // Written before it happens: a process that is ended by it does not play it again.
  m_machine.Write(EventPlayed{.index = occurrence.index, .repetition = occurrence.repetition});
  try {
    ChangeDevices(occurrence.index);
    PlayAction(m_machine.Scenario().events[occurrence.index].action);
  } catch (const std::exception& error) {
    m_machine.Write(Note{error.what()});
  }
}

// What Wine's own registry and device tables have to show.
void StoryEvents::ChangeDevices(size_t index) { PlayWithoutService(m_machine.Scenario(), index); }

void StoryEvents::PlayAction(const Action& action) {
  ControlQueue& controls = ControlQueue::Get();
  using Kind = Action::Kind;
  switch (action.kind) {
    case Kind::kStart:
      return Write(virtual_notebook::kAlreadyRuns);
    case Kind::kStop:
      return Stop();
    case Kind::kKill:
      return Ask(Request::Kind::kKill);
    case Kind::kControl:
    case Kind::kSessionChange:
      return SendControl(action);
    case Kind::kArrival:
      return controls.SendDeviceEvent(platform::kDbtDeviceArrival, action.text);
    case Kind::kRemoval:
      return controls.SendDeviceEvent(platform::kDbtDeviceRemoveComplete, action.text);
    case Kind::kModemArrives:
      m_machine.Modem().SetPresent(true);
      return controls.SendDeviceEvent(platform::kDbtDeviceArrival,
                                      ModemInterface(m_machine.Modem().Description()));
    case Kind::kModemLeaves:
      m_machine.Modem().SetPresent(false);
      return controls.SendDeviceEvent(platform::kDbtDeviceRemoveComplete,
                                      ModemInterface(m_machine.Modem().Description()));
    case Kind::kModemChanges:
      return m_machine.Modem().Apply(action.modem);
    case Kind::kAccountAdded:
      return m_machine.ChangeAccounts(true);
    case Kind::kAccountRemoved:
      return m_machine.ChangeAccounts(false);
    case Kind::kSuspend:
      return PowerQueue::Get().Send(platform::kPbtApmSuspend);
    case Kind::kResume:
      PowerQueue::Get().Send(platform::kPbtApmResumeAutomatic);
      return PowerQueue::Get().Send(platform::kPbtApmResumeSuspend);
    case Kind::kPowerEvent:
      return PowerQueue::Get().Send(action.number);
    case Kind::kLogon:
      m_machine.WriteRecord({});
      return SendControl(action);
    case Kind::kBattery:
      return SendPowerSetting(platform::kGuidBatteryPercentageRemaining, action.number);
    case Kind::kPowerSetting:
      return SendPowerSetting(action.guid, action.number);
    case Kind::kEventRecord:
      return m_machine.WriteRecord(action.record);
    case Kind::kRegistrySet:
    case Kind::kRegistryDelete:
      return;  // done
  }
}

void StoryEvents::Stop() {
  const auto error = ControlQueue::Get().BeginStop();
  if (!error) return Ask(Request::Kind::kStop);
  Refuse(platform::kServiceControlStop, 0, error);
}

void StoryEvents::SendControl(const Action& action) {
  const auto sent = virtual_notebook::ControlOf(action);
  Refuse(sent->control, sent->event_type, ControlQueue::Get().SendControl(*sent));
}

void StoryEvents::SendPowerSetting(const platform::Guid& setting, uint32_t data) {
  Refuse(platform::kServiceControlPowerEvent, virtual_notebook::kPowerSettingChange,
         ControlQueue::Get().SendPowerSetting(setting, data,
                                              m_machine.Notebook().power_settings_need_acceptance));
}

void StoryEvents::Refuse(uint32_t control, uint32_t event_type, std::optional<uint32_t> error) {
  if (error) m_machine.Write(ControlRefused{control, event_type, *error});
}

void StoryEvents::End(bool rests) {
  if (!rests) Write(virtual_notebook::kDoesNotRest);
  Ask(Request::Kind::kEnd);
}

// Time stands still until what the driver does about it reaches this process.
void StoryEvents::Ask(Request::Kind kind) {
  Director::Get().Freeze();
  m_machine.Write(Request{kind});
}

}  // namespace

void BeginStory(Machine& machine, const std::vector<Entry>& journal) {
  // Never destroyed: the director uses it to the end.
  auto* const events = new StoryEvents(machine, Played(journal));
  Director& director = Director::Get();
  director.Join(false);
  director.Begin(machine.ProcessBegan(), {.next = [=] { return events->Next(); },
                                          .play = [=] { events->Play(); },
                                          .rest = events->Rest(),
                                          .at_rest = [=](bool rests) { events->End(rests); }});
  machine.Write(ProcessBegan{GetCurrentProcessId()});
  machine.Spend(virtual_notebook::kProcessStart);
}

}  // namespace nuvelta::wine
