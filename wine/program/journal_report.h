// The report of a story that was played under Wine.
#pragma once

#include <string>
#include <vector>

#include "notebook/model/scenario.h"
#include "notebook/model/story_report.h"
#include "wine/story/journal.h"

namespace nuvelta::wine_notebook {

virtual_notebook::StoryReport ReportOf(const virtual_notebook::Scenario& scenario,
                                       const std::vector<wine::Entry>& journal);

// Reports of a status that the service control manager did not take over as they
// were, each in a line.
std::vector<std::string> StatusDisagreements(const std::vector<wine::Entry>& journal);

}  // namespace nuvelta::wine_notebook
