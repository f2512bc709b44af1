// The timeline of one notebook's log, written to files.
#pragma once

#include <string>

#include "support/explain.h"

namespace nuvelta::support {

struct TimelineRequest {
  std::string path;   // a log file, or a folder with the logs of one notebook
  std::string page;   // where the page goes
  std::string trace;  // where the trace goes; empty: no trace
};

// Answers the exit code: 0 when all was written, and not what the verdict is; kBadInput
// when something could not be read, or a file that is not ours is in the way;
// kNotWritten.
int WriteTimeline(const TimelineRequest& request, const Print& print, const Print& complain);

}  // namespace nuvelta::support
