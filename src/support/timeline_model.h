// A log as what is drawn of it: lines, trace scopes, marks, runs and commands. Of a huge
// log only the end is kept.
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "support/explain.h"
#include "support/scopes.h"

namespace nuvelta::support {

// What is kept of a log: its last lines, with what lies in them, and its last processes.
inline constexpr uint64_t kMostTimelineLines = 10'000;
inline constexpr size_t kMostTimelineProcesses = 100;

struct TimelineLine {
  std::shared_ptr<const std::string> file;  // the log's part
  uint64_t number = 0;                      // in it, counted from 1
  std::string time;
  std::string thread;
  std::string text;  // with its tag, cut, fit to be printed
  bool known = true;
  // From the line before of the same process: milliseconds; none when the clock was set
  // back meanwhile.
  std::optional<int64_t> gap = 0;
};

enum class MarkKind : uint8_t { kTrigger, kPower, kService, kTrouble, kRetry, kOther };

// Where something is told: the index of its line, counted over all lines of the notebook.
struct TimelineMark {
  uint64_t at = 0;
  MarkKind kind = MarkKind::kOther;
  std::string text;
};

struct TimelineRun {
  uint64_t begin = 0;
  uint64_t end = 0;
  std::optional<Run> run{};  // none: the log ends in it
  bool repeats = false;      // it went the way of the run before, step by step
};

struct TimelineCommand {
  uint64_t begin = 0;
  uint64_t end = 0;  // of the line that tells the answer
  bool set = false;
  bool answered = false;
  std::string text{};
};

// What the log says of the radio from here on; no level: not known.
struct RadioWord {
  uint64_t at = 0;
  std::optional<int32_t> level{};
};

enum class ThreadRole : uint8_t {
  kUnknown,
  kDispatcher,
  kServiceMain,
  kWorker,
  kPower,
  kPlatform,
  kRetention,
};

struct TimelineProcess {
  Process process{};
  uint64_t begin = 0;  // its lines, from here
  uint64_t end = 0;    // up to here
  std::map<std::string, ThreadRole> roles{};
};

struct TimelineModel {
  NotebookVerdict verdict{};
  std::vector<std::string> problems{};
  uint64_t first = 0;  // the index of the first line that is kept
  std::deque<TimelineLine> lines{};
  std::deque<Scope> scopes{};
  std::deque<TimelineMark> marks{};
  std::deque<TimelineRun> runs{};
  std::deque<TimelineCommand> commands{};
  std::deque<RadioWord> radio{};
  std::deque<TimelineProcess> processes{};
  uint64_t processes_left_out = 0;

  uint64_t End() const { return first + lines.size(); }
  const TimelineLine& LineAt(uint64_t index) const { return lines[index - first]; }
  bool Holds(uint64_t index) const { return index >= first && index < End(); }
  // The index of a place in the log; none when it is not kept.
  std::optional<uint64_t> IndexOf(const Place& place) const;
  // The level that the log tells of at a line.
  std::optional<int32_t> RadioAt(uint64_t index) const;
};

// Hears an explanation and makes the model of its one notebook.
class TimelineReader final : public Explanation {
 public:
  explicit TimelineReader(TimelineModel& model) : m_model(model) {}

  uint64_t Notebooks() const { return m_notebooks; }
  bool HasVerdict() const { return m_has_verdict; }

  void OnNotebook(const NotebookLogs& logs) override;
  void OnVerdict(const NotebookVerdict& verdict) override;
  void OnProblem(const std::string& what) override;
  void OnPart(const std::string& file) override;
  void OnLine(const LogLine& line, LineMeaning meaning) override;
  void OnTrigger(const Trigger& trigger) override;
  void OnNote(const Note& note) override;
  void OnRun(const Run& run) override;
  void OnProcessEnds(const Process& process) override;

 private:
  void KeepLine(const LogLine& line, LineMeaning meaning);
  void BeginProcess();
  void NameThread(const LogLine& line);
  void FollowCommand(LineMeaning meaning);
  void SayRadio(uint64_t at, std::optional<int32_t> level);
  void DropOld();

  TimelineModel& m_model;
  uint64_t m_notebooks = 0;
  bool m_has_verdict = false;
  std::shared_ptr<const std::string> m_file = std::make_shared<const std::string>();
  uint64_t m_here = 0;   // the index of the line at hand
  uint64_t m_begin = 0;  // of the process at hand
  std::map<std::string, ThreadRole> m_roles;
  ScopeReader m_scopes;
  std::optional<uint64_t> m_run_begin;
  std::string m_run_way;  // of the run before
  std::optional<uint64_t> m_command_begin;
  bool m_command_is_set = false;
  std::optional<int32_t> m_level;         // what the log says of the radio now
  std::optional<int32_t> m_level_before;  // the set command at hand
};

const char* NameOf(ThreadRole role);
// The message of a record's text, without its tag, cut and fit to be printed: line ends
// inside of it are shown, those around it are not.
std::string MessageInOneLine(std::string_view text);

}  // namespace nuvelta::support
