// What a log tells of the notebook that wrote it, and of what happened there.
#pragma once

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "support/explain.h"

namespace nuvelta::support {

using LogMoment = std::chrono::sys_time<std::chrono::milliseconds>;

// Something that happened, as an event of a scenario.
struct LoggedEvent {
  LogMoment at{};
  std::string what;  // the event's word
  std::string text{};
  uint32_t number = 0;
};

// A call that failed: how often it had been made by then.
struct LoggedFault {
  std::string call;
  uint64_t nth = 0;
  std::string how{};  // the key of a fault, and its value
  uint32_t code = 0;
};

struct LoggedRun {
  LogMoment begin{}, end{};
  Run run;
};

struct LoggedSession {
  uint32_t number = 0;  // as logged
  std::string name;
  uint32_t state = 0;
};

// Hears a log.
class LogNotebook final : public Explanation {
 public:
  std::vector<LoggedEvent> events;
  std::vector<LoggedRun> runs;
  // How many runs stand before each query that its process did not live to see answered.
  std::vector<size_t> unanswered;
  std::vector<LoggedFault> faults;
  std::map<std::string, std::string> firmware;  // by the scenario's keys
  std::optional<std::string> fcc;               // bytes; absent: none was logged
  std::map<uint32_t, std::string> devices;      // of the first list, by their numbers
  std::vector<LoggedSession> sessions;
  std::optional<uint64_t> boot_ticks;
  std::optional<LogMoment> boot_local;
  std::optional<int64_t> logon;  // of the record that was found, seconds since 1970
  bool logon_missed = false;
  uint32_t accounts = 0;
  uint32_t oper_status = 2;
  std::string program_path;
  std::string program_version;
  std::optional<LogMoment> first;
  uint64_t notebooks = 0;
  uint64_t processes = 0;
  bool begins_whole = false;  // with the first line of a process
  std::vector<std::string> problems;

  void OnNotebook(const NotebookLogs& logs) override;
  void OnProblem(const std::string& what) override { problems.push_back(what); }
  void OnLine(const LogLine& line, LineMeaning meaning) override;
  void OnProcess(const Process& begun) override;
  void OnNote(const Note& note) override;
  void OnRun(const Run& run) override;
  void OnProcessEnds(const Process& process) override;

 private:
  void Say(const std::string& what, uint32_t number = 0, const std::string& text = {});
  void TakeStart(std::string_view message);
  void TakeFirmware(std::string_view message);
  void TakeDevice(std::string_view message);
  void TakeSession(std::string_view message);
  void TakeControl(std::string_view message);
  void TakeLogon(std::string_view message);
  void CountCalls(std::string_view message, LineMeaning meaning);
  void Fail(const std::string& call, const std::string& how, uint32_t code = 0);

  LogMoment m_now{};
  LogMoment m_process_begin{};
  std::map<std::string, uint64_t> m_calls;
  uint64_t m_session_lists = 0;
  bool m_devices_known = false;  // the first list is complete
  bool m_asks = false;           // a query is on its way
  bool m_restarts = false;       // the process has asked to be started again
};

}  // namespace nuvelta::support
