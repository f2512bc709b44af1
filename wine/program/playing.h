// One story with the real executable.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "notebook/model/scenario.h"
#include "notebook/model/story_report.h"
#include "notebook/program/why.h"
#include "wine/program/wine_prefix.h"
#include "wine/story/journal.h"

namespace nuvelta::wine_notebook {

struct WineStory {
  virtual_notebook::StoryReport report;
  std::vector<wine::Entry> journal;
  std::string log;  // all lines of all its log files
  story::Why why;
  std::filesystem::path log_folder;  // they stay there until the next story
};

// Plays the scenario that `file` holds. `print`, unless empty, is handed the log
// while it is written, on another thread. Throws story::Interrupted, after having cleaned
// up, or std::runtime_error in one line.
WineStory PlayUnderWine(WinePrefix& prefix, const std::string& file,
                        const virtual_notebook::Scenario& scenario,
                        const std::function<void(const std::string&)>& print);

}  // namespace nuvelta::wine_notebook
