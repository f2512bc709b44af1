// A whole notebook made of data: every port on a story, its service control
// manager running the service's program, and what a story leaves behind.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "notebook/machine/scheduler.h"
#include "notebook/machine/virtual_service_control.h"
#include "notebook/model/scenario.h"
#include "notebook/model/story_report.h"

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

// Since the epoch; sets the host process's time zone to the story's.
Nanoseconds StartOf(const Scenario& scenario);

class VirtualMachine {
 public:
  // Somebody who looks at the notebook in the middle of its story, which ends there: the
  // service's process has been ended, as it would disturb and be disturbed, but the
  // notebook's inspection tells of it as if it ran. `body` is a process of its own.
  struct Visit {
    std::function<void()> body;
    // Since the story's start, behind what happens then. None: when the service rests
    // behind the last event.
    std::optional<Nanoseconds> at{};
  };

  struct Options {
    Scheduler::Mode mode = Scheduler::Mode::kDeterministic;
    uint64_t seed = 1;
    std::filesystem::path disk;  // the host folder that holds the notebook's files
    // Asked often, under a lock and on any thread, with the time since the story's
    // start. Once it answers false the service's process is ended, and with it the
    // story. Empty: it goes on to its end.
    std::function<bool(Nanoseconds story_time)> go_on{};
    Visit visit{};  // without a body: nobody comes
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
  struct Parts;  // machine_parts.h

  // In director.cpp: what happens to the notebook, and when.
  class Target;
  void Direct();
  void PlayEvents();
  void Receive();
  void EndStory();
  void CutShort();
  void RunShell(const std::string& command_line);

  void StartService();
  void ServiceProcess(uint32_t process);
  void KillService(uint32_t process);
  void Note(std::string text);
  void OnCrash(const std::string& thread, const std::string& what);
  StoryReport Report();

  const Scenario m_scenario;
  const Program m_program;
  const Visit m_visit;
  std::unique_ptr<Parts> m_parts;
};

}  // namespace nuvelta::virtual_notebook
