// Where the log files of stories are kept: a folder a story below one of the user's.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "notebook/model/scenario.h"

namespace nuvelta::story {

// The name by which the programs know a scenario on standard input.
inline constexpr const char* kStandardInput = "-";

// A folder name for each file, in order, all different: the file's name without its
// extension. Of several with one name the second is NAME-2, and so on, past names that
// other files have.
std::vector<std::string> FolderNames(const std::vector<std::string>& files);

// Why the story's log files cannot go into `disk`, in one line; empty when they can.
// They take the place of an earlier run's, but of nothing else.
std::string WhyNotInto(const std::filesystem::path& disk,
                       const virtual_notebook::Scenario& scenario);

}  // namespace nuvelta::story
