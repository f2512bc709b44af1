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
  std::vector<std::string> told;     // by the driver
};

// Plays the scenario that `file` holds. `print`, unless empty, is handed the log
// while it is written, on another thread. Throws story::Interrupted, after having cleaned
// up, or std::runtime_error in one line.
WineStory PlayUnderWine(WinePrefix& prefix, const std::string& file,
                        const virtual_notebook::Scenario& scenario,
                        const std::function<void(const std::string&)>& print);

// When the support program looks at a story's notebook: before anything has happened, with the
// service installed, or when the service rests behind the last event.
enum class Moment { kBefore, kAfter };

struct Look {
  int exit_code = 0;
  std::string output, errors;        // what the support program has printed
  std::vector<wine::Entry> journal;  // with what it asked of the modem
};

// Runs the support program with these arguments on the scenario's notebook. Throws as above.
Look LookUnderWine(WinePrefix& prefix, const std::string& file,
                   const virtual_notebook::Scenario& scenario, Moment moment,
                   const std::vector<std::string>& arguments);

}  // namespace nuvelta::wine_notebook
