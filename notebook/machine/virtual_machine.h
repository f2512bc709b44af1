// A whole notebook made of data: every port on a story, its service control
// manager running the service's program, and what a story leaves behind.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "notebook/machine/scheduler.h"
#include "notebook/machine/virtual_service_control.h"
#include "notebook/model/modem_model.h"
#include "notebook/model/scenario.h"

namespace nuvelta::virtual_notebook {

// The program that the notebook's service control manager starts.
struct Program {
  std::function<uint32_t()> main;           // returns the exit code
  std::function<void()> mute;               // a process that is ended writes no more
  std::function<void()> make_afresh;        // forgets process-wide state
  std::function<std::string()> log_folder;  // as the process finds it
  std::string log_prefix;
  std::string log_suffix;
};

struct ProcessEnd {
  uint32_t process = 0;
  enum class How { kReturned, kKilled, kCrashed } how = How::kReturned;
  uint32_t exit_code = 0;
  std::string crash;  // the thread and what left it
};

// What happened in a story, as the notebook saw it.
struct StoryReport {
  std::vector<ModemCommand> commands;
  int32_t radio_before = 0;
  int32_t radio_after = 0;
  std::vector<StatusReport> status_reports;
  std::vector<RefusedControl> refused_controls;  // but the stop at the end
  std::vector<ProcessEnd> processes;
  std::vector<std::string> launches;  // elevated command lines
  std::vector<std::string> notes;     // what the story could not do as written
  std::vector<FiredFault> fired_faults;
  std::vector<Fault> faults_not_fired;
  std::string standard_output;
  std::string deadlock;       // empty, or who waited for what
  size_t leaked_handles = 0;  // events, keys, searches open when all had ended but
                              // those that the process keeps
  Nanoseconds virtual_time{};
  uint64_t steps = 0;
  bool cut_short = false;  // by Options::go_on

  // True when nothing crashed and nothing was stuck.
  bool Behaved() const;
};

class VirtualMachine {
 public:
  struct Options {
    Scheduler::Mode mode = Scheduler::Mode::kDeterministic;
    uint64_t seed = 1;
    std::filesystem::path disk;  // the host folder that holds the notebook's files
    // Asked often, under a lock and on any thread, with the time since the story's
    // start. Once it answers false the service's process is ended, and with it the
    // story. Empty: it goes on to its end.
    std::function<bool(Nanoseconds story_time)> go_on{};
  };

  // Sets the host process's time zone to the story's.
  VirtualMachine(const Scenario& scenario, Program program, const Options& options);
  ~VirtualMachine();
  VirtualMachine(const VirtualMachine&) = delete;
  VirtualMachine& operator=(const VirtualMachine&) = delete;

  // Plays the story to its end. Call it once.
  StoryReport Play();

  // Where a path of the notebook lies on the host.
  std::filesystem::path HostPath(const std::string& path) const;

  // Runs `body` as the only thread of a process on this notebook, instead of the
  // story: for tests and measurements of single functions.
  StoryReport RunProcess(std::function<void()> body);

 private:
  struct Parts;

  void Direct();
  void PlayEvent(const Event& event);
  void StartService();
  void ServiceProcess(uint32_t process);
  void EndStory();
  void CutShort();
  void KillService(uint32_t process);
  void RunShell(const std::string& command_line);
  void Note(std::string text);
  void OnCrash(const std::string& thread, const std::string& what);
  StoryReport Report();

  const Scenario m_scenario;
  const Program m_program;
  std::unique_ptr<Parts> m_parts;
};

}  // namespace nuvelta::virtual_notebook
