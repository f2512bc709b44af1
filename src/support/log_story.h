// What a log tells, as processes with their triggers, runs and ends: read in one pass,
// without keeping lines. The meaning of each run is its cause.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "support/causes.h"
#include "support/line_kinds.h"
#include "support/log_lines.h"
#include "support/run.h"

namespace nuvelta::support {

enum class TriggerKind : uint8_t { kStart, kAdapter, kAccount, kResume, kQuickBoot, kUnknown };

struct Trigger {
  TriggerKind kind = TriggerKind::kUnknown;
  Place at{};
};

// What else happened that support asks for.
enum class NoteKind : uint8_t {
  kServiceRuns,
  kStopAsked,
  kServiceEnds,
  kSuspends,
  kResumes,  // from sleep or hibernation
  kQuickBoot,
  kLogon,
  kDeviceArrives,
  kDeviceLeaves,
  kRetry,
  kGiveUp,
  kRestartAsked,
  kRestartFailed,
  kFailure,  // of the start-up; the service goes on or ends
};

struct Note {
  NoteKind kind{};
  Place at{};
  std::string text{};  // more of it, as logged
};

struct Process {
  Place begin{};
  std::string built{};
  std::string version{};
  bool has_begin = false;  // its first line is in the log
  bool ends_in_mid_line = false;
  Place last_line{};
  uint64_t lines = 0;
  uint64_t unknown_lines = 0;
  uint64_t stray_lines = 0;
  uint64_t triggers = 0;
  uint64_t runs = 0;  // ended ones
  uint64_t retries = 0;
  uint64_t give_ups = 0;
  uint64_t restarts = 0;
  uint64_t queries = 0;
  uint64_t sets = 0;
  std::string platform{};  // of the last run that worked it out
  // What the log says of the radio itself: the last answer or obeyed set command.
  std::optional<int32_t> radio{};
  Place radio_at{};

  // Why the radio is as it is at the end of the process's log.
  Cause cause = Cause::kNoRun;
  Place decided{};
  std::string deciding{};
  Place since{};       // the first of the last runs that have this verdict
  bool ended = false;  // its last lines are in the log
  Place unfinished{};  // a run that the log ends in

  Verdict GetVerdict() const { return InfoOf(cause).verdict; }
  // Nothing of it is a line of this service.
  bool IsForeign() const { return lines == unknown_lines && lines + stray_lines > 0; }
};

// Hears what the log tells, in its order.
class LogListener {
 public:
  LogListener() = default;
  LogListener(const LogListener&) = delete;
  LogListener& operator=(const LogListener&) = delete;
  virtual ~LogListener() = default;

  // A part of a log begins; its lines follow.
  virtual void OnPart(const std::string& /*file*/) {}
  virtual void OnLine(const LogLine& /*line*/, LineMeaning /*meaning*/) {}
  virtual void OnProcess(const Process& /*begun*/) {}
  virtual void OnTrigger(const Trigger& /*trigger*/) {}
  virtual void OnNote(const Note& /*note*/) {}
  virtual void OnRun(const Run& /*run*/) {}
  virtual void OnProcessEnds(const Process& /*process*/) {}
};

// Reads the logs of one notebook, oldest first.
class LogStory {
 public:
  explicit LogStory(LogListener& listener) : m_listener(listener) {}

  // A part of a log begins. `new_log`: not the one that the part before belongs to.
  void BeginFile(const std::string& name, bool new_log);
  void Take(const LogLine& line);
  // The part was read to its end.
  void EndFile(uint64_t strays, bool ends_in_mid_line);
  // No more parts.
  void Finish();

 private:
  // What a thread is at, so far as it makes tasks.
  struct ThreadTask {
    std::string thread;
    TriggerKind kind = TriggerKind::kUnknown;
  };

  Place At(const LogLine& line) const;
  void BeginProcess(const LogLine& line);
  void EndProcess();
  void Announce();
  void TakeProcess(const LogLine& line, LineMeaning meaning);
  void TakeSystem(const LogLine& line, LineMeaning meaning);
  void TakeTrigger(const LogLine& line, LineMeaning meaning);
  void TakeTask(const LogLine& line, LineMeaning meaning);
  void TakeRestart(const LogLine& line, LineMeaning meaning);
  void TakeRun(const LogLine& line, LineMeaning meaning);
  void EndRun(const LogLine& line, std::string_view rest);
  void FollowRadio(const LogLine& line, LineMeaning meaning);
  // Why the service does not work at all.
  void Fail(Cause cause, const LogLine& line);
  void Tell(NoteKind kind, const LogLine& line, std::string_view text = {});
  void SetTrigger(std::string_view thread, TriggerKind kind);
  TriggerKind TakeTriggerOf(std::string_view thread);

  LogListener& m_listener;
  std::string m_file;
  bool m_open = false;       // a process is being read
  bool m_announced = false;  // the listener knows of it
  Process m_process;
  std::vector<ThreadTask> m_threads;
  std::string m_worker;  // the thread of the run at hand; empty between runs
  Place m_level_at;      // the last answer to a query
  std::string m_last_time;
  uint64_t m_last_line = 0;
  RunReader m_run;
};

}  // namespace nuvelta::support
