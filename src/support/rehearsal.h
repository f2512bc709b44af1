// A run of the service's task without its set command: the service's own functions, in the
// order of CTaskAuthModule::doJob, listened to and judged like a run of a log.
#pragma once

#include "support/run.h"

namespace nuvelta::support {

struct Rehearsal {
  // Its cause says what a run would come to now: kWouldSwitchOn in the place of the set
  // command, kNotAsked in that of the query when the modem is to be left alone.
  Run run;
  bool queried = false;  // the modem was asked, so far as it let itself be asked
};

// A process of its own, in which nothing else logs, and no thread of the service.
Rehearsal Rehearse(bool query);
// The query alone, for a modem that no run would come to.
Command AskModem();

}  // namespace nuvelta::support
