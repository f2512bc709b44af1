// Plays a story outside the service's process: starts the service, serves what the
// virtual hardware inside asks for, and notices how its processes end.
#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "notebook/model/control_rules.h"
#include "notebook/model/scenario.h"
#include "wine/driver/background_call.h"
#include "wine/driver/service_entry.h"
#include "wine/driver/service_process.h"
#include "wine/story/journal.h"
#include "wine/story/occurrences.h"

namespace nuvelta::wine {

class Player {
 public:
  // The prefix is the scenario's notebook (StoryInPrefix); `folder` is where the
  // service lies. A process that leaves a dump is ended, for it may wait for somebody to
  // answer its message box; with `awaits_end` it has to end by itself, and each end is
  // printed. Throws std::runtime_error.
  Player(const virtual_notebook::Scenario& scenario, const std::filesystem::path& folder,
         ServiceEntry service, bool awaits_end = false);

  // `look` is called once: when the service rests behind the last event, before it is
  // stopped, or at the story's end when it does not come to that.
  void LookAtRest(std::function<void()> look) { m_look = std::move(look); }

  // Plays the story to its end; no process of the service is left. What happened is
  // in the journal. Throws std::runtime_error when it cannot be played.
  void Play();

 private:
  using Clock = std::chrono::steady_clock;

  // How the process that is watched has to end.
  enum class Fate { kOpen, kKilled, kCrashed };
  class Target;

  void ReadOn();
  void Read(const Entry& entry);
  void Serve(Request::Kind request);
  void Look();
  void SendStop();
  void CheckStop();
  void CheckEnd();
  void CheckCrash();
  bool IsWhole(const std::filesystem::path& dump);
  void CheckProgress();
  void Watch();
  bool FindProcess();
  void ProcessGone();
  void PrintEnd() const;
  bool Starting();
  void Kill(Fate fate);
  void Write(decltype(Entry::what) what, Duration at);
  void WriteNote(const std::string& text) { Write(Note{text}, m_now); }

  // In player_events.cpp.
  bool PlayNext();
  void RefuseControl(const virtual_notebook::SentControl& sent);

  const virtual_notebook::Scenario& m_scenario;
  const std::filesystem::path m_folder;
  const bool m_awaits_end;
  const std::filesystem::path m_journal;
  const ServiceEntry m_service;
  const std::vector<Occurrence> m_occurrences;

  std::vector<Entry> m_entries;
  size_t m_read = 0;  // of the entries
  uintmax_t m_journal_size = 0;
  Clock::time_point m_last_news = Clock::now();
  Duration m_now{};  // story time of the last entry

  std::optional<ServiceProcess> m_process;
  Clock::time_point m_process_found{};
  std::vector<uint32_t> m_begun;  // processes in the journal, oldest first
  std::set<uint32_t> m_gone;
  Fate m_fate = Fate::kOpen;
  std::set<uint32_t> m_doomed;  // a command line that ends them was launched
  std::set<std::filesystem::path> m_dumps;
  uintmax_t m_dump_size = 0;  // of the one that is being written
  Clock::time_point m_dump_grew{};

  std::optional<BackgroundCall> m_start;
  std::optional<BackgroundCall> m_stop;
  std::optional<Clock::time_point> m_end_asked;
  std::optional<Clock::time_point> m_restart_asked;
  bool m_over = false;
  std::function<void()> m_look;
};

}  // namespace nuvelta::wine
