// The order of the service's status reports.
#pragma once

#include <vector>

#include "lives/findings.h"
#include "notebook/machine/virtual_machine.h"

namespace nuvelta::explore {

// Checks the reports of every process of a story: start pending, running, stop
// pending, stopped, with their check points. Other controls than stop and faults
// of the calls that the sequence rests on permit more.
void CheckStatusReports(const virtual_notebook::Scenario& scenario,
                        const virtual_notebook::StoryReport& report, Findings& findings);

}  // namespace nuvelta::explore
