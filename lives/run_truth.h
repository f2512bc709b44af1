// The cause of a run, worked out from what the notebook answered in it: by rules of their
// own, so that they can be held against what is read in the log.
#pragma once

#include "lives/run_answers.h"
#include "notebook/model/scenario.h"

namespace nuvelta::explore {

// The rules know the firmware by its fields: not what a raw table holds, or a system
// structure of another length.
bool KnowsFirmware(const virtual_notebook::Notebook& notebook);

// The id of the cause, as support prints it.
const char* CauseOf(const RunAnswers& answers, const virtual_notebook::Notebook& notebook);

}  // namespace nuvelta::explore
