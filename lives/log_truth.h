// What support reads in a life's logs, held against what the notebook knows of it.
#pragma once

#include <filesystem>
#include <vector>

#include "lives/findings.h"
#include "lives/run_watch.h"
#include "lives/watch.h"
#include "notebook/machine/virtual_machine.h"

namespace nuvelta::explore {

// The processes in order, and the log files of the story, oldest lines first.
void CompareWithLogs(const virtual_notebook::Scenario& life,
                     const virtual_notebook::StoryReport& report,
                     const std::vector<ProcessTruth>& truths,
                     const std::vector<std::filesystem::path>& files, Findings& findings,
                     Counts& counts);

}  // namespace nuvelta::explore
