// What follows when a call of the operating system fails: call by call, as the
// service's behaviour is described.
#pragma once

#include <span>
#include <string_view>
#include <vector>

namespace nuvelta::test {

// What the story comes to with a fault that has passed.
enum class Outcome {
  kSame,          // the modem's radio and the states as without the fault
  kFinal,         // the same, or a run took it for final: the radio may stay as it was
  kUnheard,       // the same, or the service did not hear of an event
  kCrash,         // the exception leaves a thread and ends the process
  kNoStatus,      // no state is ever reported
  kNoEvent,       // stopped at once, without a stop event
  kNoDispatcher,  // the process ends with the error
  kNoWorker,      // no task is ever run
  kNoStart,       // killed for a restart, and nothing is started
  kWait,          // a wait that fails ends at once; that of the run loop ends the service
  kSignal,        // nobody is woken: a task rests, the stop is not noticed
  kReport,        // the service manager does not learn of a state
  kUnknown,       // there is no log to tell
};

enum class How { kError, kNull, kHresult, kBadAlloc };

// One place from which a call is made. `scope` is the trace scope around it, and
// `lines` is how the thread's log goes on there, from the first line on that the
// story has only because of the fault. A line with "*" at its end is a beginning.
struct Consequence {
  std::string_view call;
  How how = How::kError;
  std::string_view scope{};
  std::vector<std::string_view> lines{};
  Outcome outcome = Outcome::kSame;
};

// Several rows for a call made in several places.
std::span<const Consequence> Consequences();

// Calls whose failure may leave no trace in the log, for the reason given there.
bool MayLeaveNoTrace(std::string_view call, How how);

}  // namespace nuvelta::test
