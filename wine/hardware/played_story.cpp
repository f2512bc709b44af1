#include "wine/hardware/played_story.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <exception>
#include <fstream>
#include <utility>

#include "notebook/model/play_action.h"
#include "notebook/scenario/scenario_reader.h"
#include "wine/hardware/last_error.h"
#include "wine/hardware/story_clock.h"
#include "wine/hardware/story_events.h"
#include "wine/hardware/windows_time.h"
#include "wine/story/places.h"

namespace nuvelta::wine {

namespace fs = std::filesystem;
using virtual_notebook::Action;
using virtual_notebook::EventRecord;
using virtual_notebook::Fault;
using virtual_notebook::KnownCall;
using virtual_notebook::ModemDescription;
using virtual_notebook::ModemReply;
using virtual_notebook::Scenario;

namespace {

fs::path Program() {
  std::array<wchar_t, MAX_PATH> path{};
  GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
  return path.data();
}

fs::path ProgramFolder() { return Program().parent_path(); }

// The support program looks at the notebook, and is no part of the story.
bool OnlyLooks() { return Program().filename() == kSupportFile; }

std::string StoryFile(const fs::path& folder) {
  std::ifstream stream(folder / kStoryFile);
  std::string line;
  std::getline(stream, line);
  return line;
}

// The driver writes the story's file last, which is when the story begins.
Duration BeginOf(const fs::path& folder) {
  WIN32_FILE_ATTRIBUTE_DATA data{};
  GetFileAttributesExW((folder / kStoryFile).c_str(), GetFileExInfoStandard, &data);
  return Since1970(data.ftLastWriteTime);
}

bool IsNamed(const Scenario& scenario, std::string_view call) {
  const auto named = [&](const auto& entry) { return entry.call == call; };
  return std::ranges::any_of(scenario.faults, named) || std::ranges::any_of(scenario.delays, named);
}

}  // namespace

bool PlayedStory::HasStory() {
  std::error_code ignored;
  return fs::exists(ProgramFolder() / kStoryFile, ignored);
}

PlayedStory* PlayedStory::Current() {
  static PlayedStory* const story = []() -> PlayedStory* {
    if (!HasStory()) return nullptr;
    try {
      // Never destroyed: threads outlive main.
      auto* const made = new PlayedStory(ProgramFolder());
      const std::vector<Entry> journal = ReadJournal(made->m_folder / kJournalFile);
      made->Replay(journal);
      if (OnlyLooks()) {
        BeginLook(*made);
      } else {
        BeginStory(*made, journal);
      }
      return made;
    } catch (const std::exception& error) {
      std::fprintf(stderr, "the story cannot be played: %s\n", error.what());
      std::_Exit(3);
    }
  }();
  return story;
}

PlayedStory::PlayedStory(const fs::path& folder)
    : m_folder(folder),
      m_scenario(virtual_notebook::ReadScenarioFile(StoryFile(folder))),
      m_begin(BeginOf(folder)),
      m_modem(m_scenario.notebook.modem),
      m_faults(m_scenario.faults),
      m_delays(m_scenario.delays),
      m_accounts(m_scenario.notebook.accounts) {
  for (const EventRecord& record : m_scenario.notebook.event_log) {
    m_records.push_back({record, Seconds(record.at)});
  }
}

// Brings the notebook to where the earlier processes have left it.
void PlayedStory::Replay(const std::vector<Entry>& journal) {
  for (const Entry& entry : journal) {
    m_process_began = std::max(m_process_began, entry.at);
    if (const auto* played = std::get_if<EventPlayed>(&entry.what)) {
      ReplayEvent(*played, entry.at);
    } else if (const auto* made = std::get_if<CommandMade>(&entry.what)) {
      const virtual_notebook::ModemCommand& command = made->command;
      m_modem.Execute(command.set, command.command_id, command.payload, command.at);
    } else if (const auto* call = std::get_if<CallMade>(&entry.what)) {
      m_faults.Count(call->call);
      m_delays.Count(call->call);
    }
  }
}

// What an event has left behind that is not in the prefix itself.
class PlayedStory::Replayed final : public virtual_notebook::ActionTarget {
 public:
  Replayed(PlayedStory& story, Duration at) : m_story(story), m_at(at) {}

  void InstallModem(const ModemDescription& /*modem*/) override {
    m_story.m_modem.SetPresent(true);
  }
  void RemoveModem() override { m_story.m_modem.SetPresent(false); }
  void ChangeModem(const Action::ModemChange& change) override { m_story.m_modem.Apply(change); }
  void ChangeAccounts(bool added) override { m_story.CountAccount(added); }
  void WriteRecord(const EventRecord& record) override {
    m_story.m_records.push_back({record, m_story.Seconds(m_at)});
  }

  void Start() override {}
  void Stop() override {}
  void Kill() override {}
  void SendControl(const virtual_notebook::SentControl& /*sent*/) override {}
  void SendDeviceEvent(uint32_t /*type*/, const std::string& /*interface_name*/) override {}
  void SendPowerEvent(uint32_t /*type*/) override {}
  void SendPowerSetting(const platform::Guid& /*setting*/, uint32_t /*data*/) override {}
  void SetRegistryValue(const std::string& /*key*/, const std::string& /*name*/,
                        const virtual_notebook::RegistryValue& /*value*/) override {}
  void DeleteRegistryValue(const std::string& /*key*/, const std::string& /*name*/) override {}

 private:
  PlayedStory& m_story;
  const Duration m_at;
};

void PlayedStory::ReplayEvent(const EventPlayed& played, Duration at) {
  Replayed target(*this, at);
  PlayAction(m_scenario.events.at(played.index).action, m_modem.Description(), target);
}

int64_t PlayedStory::Seconds(Duration at) const {
  return std::chrono::floor<std::chrono::seconds>(m_begin + at).count();
}

Duration PlayedStory::WallClock() const { return m_begin + StoryClock::Get().Now(); }

std::optional<Fault> PlayedStory::Count(KnownCall call) {
  if (call.Takes() > Duration()) Spend(call.Takes());
  // Only calls that the scenario names matter to the processes after this one.
  if (!IsNamed(m_scenario, call.Name())) return {};
  Spend(m_delays.Count(call.Name()));
  const std::lock_guard lock(m_mutex);
  Write(CallMade{std::string(call.Name())});
  auto fault = m_faults.Count(call.Name());
  if (fault) Write(FaultFired{m_faults.Fired().back()});
  return fault;
}

bool PlayedStory::Fails(KnownCall call) {
  const std::optional<Fault> fault = Count(call);
  if (!fault) return false;
  SetLastError(fault->code);
  return true;
}

void PlayedStory::Spend(Duration time) {
  if (StoryClock::Get().TakesPart()) {
    StoryClock::Get().Await([] { return false; }, time);
  }
}

ModemReply PlayedStory::Execute(bool set, uint32_t command_id, std::vector<uint8_t> payload) {
  const std::lock_guard lock(m_mutex);
  ModemReply reply = m_modem.Execute(set, command_id, std::move(payload), WallClock());
  Write(CommandMade{m_modem.Commands().back()});
  return reply;
}

std::vector<WrittenRecord> PlayedStory::Records() const {
  const std::lock_guard lock(m_mutex);
  return m_records;
}

void PlayedStory::WriteRecord(const EventRecord& record) {
  const int64_t now = Seconds(StoryClock::Get().Now());
  const std::lock_guard lock(m_mutex);
  m_records.push_back({record, now});
}

uint32_t PlayedStory::Accounts() const {
  const std::lock_guard lock(m_mutex);
  return m_accounts;
}

void PlayedStory::ListenToAccounts(std::function<void(bool added)> listener) {
  const std::lock_guard lock(m_mutex);
  m_listeners.push_back(std::move(listener));
}

bool PlayedStory::CountAccount(bool added) {
  if (!added && m_accounts == 0) return false;
  m_accounts = added ? m_accounts + 1 : m_accounts - 1;
  return true;
}

void PlayedStory::ChangeAccounts(bool added) {
  std::vector<std::function<void(bool)>> listeners;
  {
    const std::lock_guard lock(m_mutex);
    if (!CountAccount(added)) return;
    listeners = m_listeners;
  }
  for (const auto& listener : listeners) {
    StoryClock::Get().Spawn([listener, added] { listener(added); });
  }
}

std::string PlayedStory::TakeCrashRequest() {
  const KeepLastError keep;
  const fs::path file = m_folder / kCrashRequestFile;
  std::ifstream requests(file);
  std::string how;
  std::getline(requests, how);
  const std::string others{std::istreambuf_iterator(requests), {}};
  requests.close();
  if (!others.empty()) std::ofstream(file, std::ios::trunc) << others;
  return how;
}

void PlayedStory::Write(decltype(Entry::what) what) {
  const KeepLastError keep;
  Append(m_folder / kJournalFile, {.at = StoryClock::Get().Now(), .what = std::move(what)});
}

}  // namespace nuvelta::wine
