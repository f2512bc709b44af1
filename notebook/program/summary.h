// The summary of a story that has been played.
#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "notebook/machine/virtual_machine.h"
#include "notebook/program/log_counts.h"
#include "notebook/program/why.h"

namespace nuvelta::story {

struct Summary {
  std::string file;
  std::string title;
  virtual_notebook::StoryReport report;
  std::optional<LogCounts> counts;  // none when there is no telling
  Why why{};
  std::chrono::nanoseconds real_time{};
  std::string log_folder;  // empty when it was not kept
  std::string log_lost{};  // why lines of the log could not be written, if some could not
};

std::string SummaryTable(const Summary& summary);
std::string SummaryLine(const Summary& summary);
// One JSON object in one line, with its line end.
std::string SummaryJson(const Summary& summary);

}  // namespace nuvelta::story
