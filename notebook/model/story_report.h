// What a story leaves behind, on whichever stage it was played.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "notebook/model/control_rules.h"
#include "notebook/model/fault_plan.h"
#include "notebook/model/modem_model.h"
#include "notebook/model/scenario.h"
#include "platform/service_control.h"

namespace nuvelta::virtual_notebook {

// One report of SetServiceStatus.
struct StatusReport {
  uint32_t process = 0;
  platform::ServiceStatus status;
};

struct ProcessEnd {
  uint32_t process = 0;
  enum class How { kReturned, kKilled, kCrashed } how = How::kReturned;
  uint32_t exit_code = 0;
  std::string crash;  // the thread and what left it
};

// Notes on a story that could not be played as written, and what it was stuck at.
inline constexpr const char* kAlreadyRuns = "start: the service is already running";
inline constexpr const char* kDoesNotRest =
    "the service did not come to rest; the story ends all the same";
inline constexpr const char* kRefusesStop =
    "end: the service does not accept the stop control; its process is ended";
inline constexpr const char* kDoesNotEnd =
    "the service did not end within 60 s of its stop control";

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
  Duration virtual_time{};
  uint64_t steps = 0;
  bool cut_short = false;  // by Options::go_on

  // True when nothing crashed and nothing was stuck.
  bool Behaved() const;
};

}  // namespace nuvelta::virtual_notebook
