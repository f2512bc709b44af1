// Captures the notebook that it runs on as a scenario, with its logs: to be played at a desk.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "support/explain.h"

namespace nuvelta::support {

struct CaptureRequest {
  std::string folder;  // UTF-8
  bool query = true;   // else the modem is left alone: no session, no command
  bool keep_names = false;
};

// Needs the installed platform, with its inspection, and a process in which no service
// runs. Answers the exit code: 0, kBadInput or kNotWritten.
int Capture(const CaptureRequest& request, const Print& print, const Print& complain);

}  // namespace nuvelta::support
