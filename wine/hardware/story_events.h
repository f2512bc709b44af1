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
// Instead, in a process that is none of the service's: time goes on there alone, and nothing
// happens. What it asks of the modem, and the calls that the scenario names, count as the
// service's own.
void BeginLook(PlayedStory& story);

}  // namespace nuvelta::wine
