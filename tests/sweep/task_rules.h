// What the log of any story must say of tasks and their runs, whatever fails.
#pragma once

#include <string>
#include <vector>

#include "story_lines.h"

namespace nuvelta::test {

// Where the log breaks the rules of the queue, of the retry budget, or of the
// decision that a run makes.
std::vector<std::string> BrokenTaskRules(const std::vector<StoryLine>& lines);

}  // namespace nuvelta::test
