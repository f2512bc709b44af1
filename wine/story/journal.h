// The journal of a story that is played under Wine: what has happened so far, as
// one JSON object a line. It outlives the service's process, so that the next
// process goes on where the last one ended, and it is what the report is made of.
//
// Writers append whole lines and never hold the file: the virtual hardware inside
// the service's process and the driver outside it take turns.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "notebook/model/fault_plan.h"
#include "notebook/model/modem_model.h"
#include "notebook/model/scenario.h"
#include "platform/service_control.h"

namespace nuvelta::wine {

using virtual_notebook::Duration;

// A process of the service began, with the virtual hardware in it.
struct ProcessBegan {
  uint32_t process = 0;
};
// It is gone; only the driver can know.
struct ProcessEnded {
  uint32_t process = 0;
  bool killed = false;  // from outside: taskkill, or a kill event
  uint32_t exit_code = 0;
};
// Repetition `repetition` of event `index` of the scenario has been played.
struct EventPlayed {
  uint32_t index = 0;
  uint32_t repetition = 0;
};
// A command reached the modem.
struct CommandMade {
  virtual_notebook::ModemCommand command;
};
// What the service reported with SetServiceStatus, and what the service control
// manager answers when it is asked right afterwards.
struct StatusReported {
  uint32_t process = 0;
  platform::ServiceStatus reported;
  platform::ServiceStatus managers;
};
// One of the calls that the scenario's faults name was made.
struct CallMade {
  std::string call;
};
struct FaultFired {
  virtual_notebook::FiredFault fault;
};
// ShellExecuteExW succeeded: the file, a blank, the parameters.
struct Launched {
  std::string command_line;
};
// A control that the story sends and that does not reach the handler; `error` is 0
// where its sender is not told.
struct ControlRefused {
  uint32_t control = 0;
  uint32_t event_type = 0;
  uint32_t error = 0;
};
struct Note {
  std::string text;
};
// The virtual hardware wants something that only the driver can do. kEnd: the
// story is over, stop the service.
struct Request {
  enum class Kind { kStop, kKill, kEnd };
  Kind kind = Kind::kStop;
};

struct Entry {
  Duration at{};  // story time since the story's start
  std::variant<ProcessBegan, ProcessEnded, EventPlayed, CommandMade, StatusReported, CallMade,
               FaultFired, Launched, ControlRefused, Note, Request>
      what;
};

// Appends one line; throws std::runtime_error naming the file when that fails.
void Append(const std::filesystem::path& journal, const Entry& entry);

// All whole lines. A last line without its end is left out (its writer is at
// work, or was killed); a line that cannot be understood throws
// std::runtime_error with the file and the line's number. Empty when there is no
// such file.
std::vector<Entry> ReadJournal(const std::filesystem::path& journal);

}  // namespace nuvelta::wine
