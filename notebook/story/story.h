// Plays a scenario: the real service on a virtual notebook.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "notebook/machine/virtual_machine.h"
#include "notebook/model/scenario.h"

namespace nuvelta::story {

struct Options {
  std::filesystem::path disk;      // holds the notebook's files
  std::optional<uint64_t> seed{};  // instead of the scenario's
  bool free_running = false;       // all threads at once instead of one at a time
  // See VirtualMachine::Options.
  std::function<bool(virtual_notebook::Nanoseconds story_time)> go_on{};
  virtual_notebook::VirtualMachine::Visit visit{};
};

// The service's program, as the notebook's service control manager runs it.
virtual_notebook::Program ServiceProgram();

// The host folder of the log files of a notebook on `disk`.
std::filesystem::path LogFolder(const virtual_notebook::Scenario& scenario,
                                const std::filesystem::path& disk);
// The scenario's start as log file names have it.
std::string LogStamp(const virtual_notebook::Scenario& scenario);

// Plays the scenario to its end; the log files stay on the disk. One story at a
// time in a process.
virtual_notebook::StoryReport Play(const virtual_notebook::Scenario& scenario,
                                   const Options& options);

// The log files that the story wrote, oldest lines first.
std::vector<std::filesystem::path> LogFiles(const virtual_notebook::Scenario& scenario,
                                            const std::filesystem::path& disk);
// All their lines, with their "\r\n".
std::string ReadLog(const virtual_notebook::Scenario& scenario, const std::filesystem::path& disk);

}  // namespace nuvelta::story
