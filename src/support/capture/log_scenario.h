// As good a scenario as a log alone allows.
#pragma once

#include <string>

#include "support/explain.h"

namespace nuvelta::support {

struct LogScenarioRequest {
  std::string path;  // a log file, or a folder with the logs of one notebook
  std::string file;  // where the scenario goes; empty: it is printed
};

// Answers the exit code: 0, kBadInput or kNotWritten. What had to be assumed is printed, or
// complained of when the scenario itself is printed.
int WriteLogScenario(const LogScenarioRequest& request, const Print& print, const Print& complain);

}  // namespace nuvelta::support
