#include "wine/hardware/story_events.h"

#include <windows.h>

#include <exception>
#include <memory>

#include "notebook/model/event_data.h"
#include "notebook/model/story_report.h"
#include "notebook/model/story_times.h"
#include "platform/service_control.h"
#include "wine/hardware/control_queue.h"
#include "wine/hardware/played_story.h"
#include "wine/hardware/power_queue.h"
#include "wine/hardware/story_clock.h"
#include "wine/story/occurrences.h"
#include "wine/story/prefix_target.h"

namespace nuvelta::wine {

namespace {

using virtual_notebook::Action;
using virtual_notebook::EventRecord;
using virtual_notebook::ModemDescription;
using virtual_notebook::SentControl;

// Plays the events, and is what they are done to.
class StoryEvents final : public PrefixTarget {
 public:
  StoryEvents(PlayedStory& story, size_t next)
      : m_story(story), m_occurrences(Occurrences(story.Scenario())), m_next(next) {}

  std::optional<Duration> Next() const {
    if (m_next >= m_occurrences.size()) return std::nullopt;
    return m_occurrences[m_next].at;
  }

  Duration Rest() const {
    return m_story.Scenario().rest_within +
           (m_occurrences.empty() ? Duration() : m_occurrences.back().at);
  }

  void Play();
  void End(bool rests);

 private:
  void Start() override { Write(virtual_notebook::kAlreadyRuns); }
  void Stop() override;
  void Kill() override { Ask(Request::Kind::kKill); }
  void SendControl(const SentControl& sent) override;
  void SendDeviceEvent(uint32_t event_type, const std::string& interface_name) override;
  void SendPowerEvent(uint32_t type) override { PowerQueue::Get().Send(type); }
  void SendPowerSetting(const platform::Guid& setting, uint32_t data) override;
  void InstallModem(const ModemDescription& modem) override;
  void RemoveModem() override;
  void ChangeModem(const Action::ModemChange& change) override;
  void ChangeAccounts(bool added) override { m_story.ChangeAccounts(added); }
  void WriteRecord(const EventRecord& record) override { m_story.WriteRecord(record); }

  void Refuse(uint32_t control, uint32_t event_type, std::optional<uint32_t> error);
  void Ask(Request::Kind kind);
  void Write(const char* text) { m_story.Write(Note{text}); }

  PlayedStory& m_story;
  const std::vector<Occurrence> m_occurrences;
  size_t m_next;
};

void StoryEvents::Play() {
  const Occurrence occurrence = m_occurrences[m_next++];
  // Written before it happens: a process that is ended by it does not play it again.
  m_story.Write(EventPlayed{.index = occurrence.index, .repetition = occurrence.repetition});
  try {
    PlayAction(m_story.Scenario().events[occurrence.index].action, m_story.Modem().Description(),
               *this);
  } catch (const std::exception& error) {
    m_story.Write(Note{error.what()});
  }
}

void StoryEvents::Stop() {
  const auto error = ControlQueue::Get().BeginStop();
  if (!error) return Ask(Request::Kind::kStop);
  Refuse(platform::kServiceControlStop, 0, error);
}

void StoryEvents::SendControl(const SentControl& sent) {
  Refuse(sent.control, sent.event_type, ControlQueue::Get().SendControl(sent));
}

void StoryEvents::SendDeviceEvent(uint32_t event_type, const std::string& interface_name) {
  ControlQueue::Get().SendDeviceEvent(event_type, interface_name);
}

void StoryEvents::SendPowerSetting(const platform::Guid& setting, uint32_t data) {
  Refuse(platform::kServiceControlPowerEvent, virtual_notebook::kPowerSettingChange,
         ControlQueue::Get().SendPowerSetting(setting, data,
                                              m_story.Notebook().power_settings_need_acceptance));
}

void StoryEvents::InstallModem(const ModemDescription& modem) {
  PrefixTarget::InstallModem(modem);
  m_story.Modem().SetPresent(true);
}

void StoryEvents::RemoveModem() {
  PrefixTarget::RemoveModem();
  m_story.Modem().SetPresent(false);
}

void StoryEvents::ChangeModem(const Action::ModemChange& change) {
  PrefixTarget::ChangeModem(change);
  m_story.Modem().Apply(change);
}

void StoryEvents::Refuse(uint32_t control, uint32_t event_type, std::optional<uint32_t> error) {
  if (error) m_story.Write(ControlRefused{control, event_type, *error});
}

void StoryEvents::End(bool rests) {
  if (!rests) Write(virtual_notebook::kDoesNotRest);
  Ask(Request::Kind::kEnd);
}

// Time stands still until what the driver does about it reaches this process.
void StoryEvents::Ask(Request::Kind kind) {
  StoryClock::Get().Freeze();
  m_story.Write(Request{kind});
}

}  // namespace

void BeginLook(PlayedStory& story) {
  StoryClock& clock = StoryClock::Get();
  clock.Join(false);
  clock.Begin(story.ProcessBegan(), {.next = [] { return std::optional<Duration>(); },
                                     .play = [] {},
                                     .rest = Duration::max(),
                                     .at_rest = [](bool /*rests*/) {}});
}

void BeginStory(PlayedStory& story, const std::vector<Entry>& journal) {
  // Never destroyed: the clock uses it to the end.
  auto* const events = new StoryEvents(story, Played(journal));
  StoryClock& clock = StoryClock::Get();
  clock.Join(false);
  clock.Begin(story.ProcessBegan(), {.next = [=] { return events->Next(); },
                                     .play = [=] { events->Play(); },
                                     .rest = events->Rest(),
                                     .at_rest = [=](bool rests) { events->End(rests); }});
  story.Write(ProcessBegan{GetCurrentProcessId()});
  story.Spend(virtual_notebook::kProcessStart);
}

}  // namespace nuvelta::wine
