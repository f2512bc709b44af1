// The notebook of the story that is being played, as the service's process meets
// it: the scenario, the modem, what has been written to the journal.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "notebook/model/delay_plan.h"
#include "notebook/model/fault_plan.h"
#include "notebook/model/modem_model.h"
#include "notebook/model/port_calls.h"
#include "notebook/model/scenario.h"
#include "wine/story/journal.h"

namespace nuvelta::wine {

// A record of the Application event log and when it was written (seconds since
// 1970).
struct WrittenRecord {
  virtual_notebook::EventRecord record;
  int64_t written = 0;
};

class PlayedStory {
 public:
  // Null when no story is being played. The first call, which must not be made
  // while libraries are being loaded, reads the scenario and the journal; a story
  // that cannot be read ends the process with a line on standard error.
  static PlayedStory* Current();
  // Whether there is a story; does not read it.
  static bool HasStory();

  const virtual_notebook::Scenario& Scenario() const { return m_scenario; }
  const virtual_notebook::Notebook& Notebook() const { return m_scenario.notebook; }
  virtual_notebook::ModemModel& Modem() { return m_modem; }

  // The real time (nanoseconds since 1970) at which the story began, the same in
  // all its processes, and the time that it is now in the story.
  virtual_notebook::Duration Begin() const { return m_begin; }
  virtual_notebook::Duration WallClock() const;
  // When this process began, in story time.
  virtual_notebook::Duration ProcessBegan() const { return m_process_began; }

  // Counts a call, which spends its time and its delay here; answers the fault to give,
  // when one is due.
  std::optional<virtual_notebook::Fault> Count(virtual_notebook::KnownCall call);
  // The same for a call that reports through the last error, which is then set.
  bool Fails(virtual_notebook::KnownCall call);
  // The calling thread spends story time, when it takes part.
  void Spend(virtual_notebook::Duration time);

  virtual_notebook::ModemReply Execute(bool set, uint32_t command_id, std::vector<uint8_t> payload);

  // Oldest first.
  std::vector<WrittenRecord> Records() const;
  void WriteRecord(const virtual_notebook::EventRecord& record);

  uint32_t Accounts() const;
  void ListenToAccounts(std::function<void(bool added)> listener);
  void ChangeAccounts(bool added);

  // How this answer about network adapters shall make the service fault; empty: not at
  // all. The request is taken from the list, unless it is the last.
  std::string TakeCrashRequest();

  void Write(decltype(Entry::what) what);

 private:
  class Replayed;

  explicit PlayedStory(const std::filesystem::path& folder);

  void Replay(const std::vector<Entry>& journal);
  void ReplayEvent(const EventPlayed& played, virtual_notebook::Duration at);
  // Whether there was one to go.
  bool CountAccount(bool added);
  int64_t Seconds(virtual_notebook::Duration at) const;

  const std::filesystem::path m_folder;
  const virtual_notebook::Scenario m_scenario;
  const virtual_notebook::Duration m_begin;
  virtual_notebook::Duration m_process_began{};
  virtual_notebook::ModemModel m_modem;
  virtual_notebook::FaultPlan m_faults;
  virtual_notebook::DelayPlan m_delays;
  mutable std::mutex m_mutex;
  std::vector<WrittenRecord> m_records;
  uint32_t m_accounts = 0;
  std::vector<std::function<void(bool added)>> m_listeners;
};

}  // namespace nuvelta::wine
