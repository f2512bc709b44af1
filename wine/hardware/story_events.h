// What happens in the story, and when, as far as a process of the service lives to
// see it.
#pragma once

#include <vector>

#include "wine/story/journal.h"

namespace nuvelta::wine {

class PlayedStory;

// Lets story time go on from where `journal`, all that the earlier processes have
// left, ends; the calling thread, the process's first, takes part. Called once.
void BeginStory(PlayedStory& story, const std::vector<Entry>& journal);

}  // namespace nuvelta::wine
