// What follows when a call of the operating system fails: call by call, as the
// service's behaviour is described.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "notebook/model/scenario.h"

namespace nuvelta::test {

// What the story comes to with a fault that has passed; as words of the table.
enum class Outcome {
  kSame,          // same: the modem's radio and the states as without the fault
  kFinal,         // final: the same, or a run took it for final: the radio may stay as it was
  kUnheard,       // unheard: the same, or the service did not hear of an event
  kCrash,         // crash: the exception leaves a thread and ends the process
  kNoStatus,      // no_status: no state is ever reported
  kNoEvent,       // no_event: stopped at once, without a stop event
  kNoDispatcher,  // no_dispatcher: the process ends with the error
  kNoWorker,      // no_worker: no task is ever run
  kNoStart,       // no_start: killed for a restart, and nothing is started
  kWait,          // wait: a wait that fails ends at once; that of the run loop ends the service
  kSignal,        // signal: nobody is woken: a task rests, the stop is not noticed
  kReport,        // report: the service manager does not learn of a state
  kUnknown,       // unknown: there is no log to tell
};

using How = virtual_notebook::Fault::Kind;

// One place from which a call is made. `scope` is the trace scope around it, and
// `lines` is how the thread's log goes on there, from the first line on that the
// story has only because of the fault. Without lines, wherever it is made.
struct Consequence {
  std::string_view call;
  How how = How::kError;
  std::string_view scope;
  std::vector<std::string> lines;
  Outcome outcome = Outcome::kSame;
  bool without_trace = false;  // the log need not show it
};

// Several rows for a call made in several places.
std::span<const Consequence> Consequences();

// Where the table is, and how it has a row.
inline constexpr std::string_view kTableFile = "tests/sweep/consequences.cpp";
inline constexpr std::string_view kNoTrace = "no trace";
std::string RowText(const Consequence& row);

}  // namespace nuvelta::test
