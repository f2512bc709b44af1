#include "notebook/story/story.h"

#include <algorithm>

#include "common/log_folder.h"
#include "common/logger.h"
#include "notebook/story/log_files.h"
#include "service/service_main.h"
#include "service/service_state.h"

namespace nuvelta::story {

namespace {

using virtual_notebook::Scenario;
using virtual_notebook::Scheduler;
using virtual_notebook::VirtualMachine;

VirtualMachine::Options MachineOptions(const Scenario& scenario, const Options& options) {
  return {.mode = options.free_running ? Scheduler::Mode::kFree : Scheduler::Mode::kDeterministic,
          .seed = options.seed.value_or(scenario.seed),
          .disk = options.disk,
          .go_on = options.go_on,
          .visit = options.visit};
}

}  // namespace

virtual_notebook::Program ServiceProgram() {
  return {.main = [] { return static_cast<uint32_t>(ServiceProcessMain()); },
          .mute = [] { CLogger::GetInstance().MuteForSimulation(); },
          .make_afresh = MakeProcessStateAfreshForSimulation,
          .log_folder = BuildLogFolderPath,
          .log_prefix = kLogFilePrefix,
          .log_suffix = kLogFileSuffix};
}

virtual_notebook::StoryReport Play(const Scenario& scenario, const Options& options) {
  return VirtualMachine(scenario, ServiceProgram(), MachineOptions(scenario, options)).Play();
}

std::filesystem::path LogFolder(const Scenario& scenario, const std::filesystem::path& disk) {
  const VirtualMachine machine(scenario, ServiceProgram(), {.disk = disk});
  return machine.HostPath(BuildLogFolderPath());
}

std::string LogStamp(const Scenario& scenario) {
  std::string stamp = scenario.start_time;
  std::ranges::replace(stamp, ' ', '_');
  std::ranges::replace(stamp, ':', '.');
  return stamp;
}

std::vector<std::filesystem::path> LogFiles(const Scenario& scenario,
                                            const std::filesystem::path& disk) {
  return LogFilesSince(LogFolder(scenario, disk), LogStamp(scenario));
}

std::string ReadLog(const Scenario& scenario, const std::filesystem::path& disk) {
  std::string text;
  for (const auto& file : LogFiles(scenario, disk)) text += ReadFile(file);
  return text;
}

}  // namespace nuvelta::story
