// Why the radio is on or off at the end of a story, as support reads it in the log.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "support/causes.h"
#include "support/run.h"

namespace nuvelta::story {

struct Why {
  support::Cause cause = support::Cause::kNoRun;
  support::Place decided{};  // the line that decides; nowhere when none does
};

// The last process of the log files decides, which are in the order of their lines.
Why WhyOf(const std::vector<std::filesystem::path>& log_files);

// "radio on (switched_on): the service has switched the radio on; line 259 of FILE"
std::string TextOf(const Why& why);

}  // namespace nuvelta::story
