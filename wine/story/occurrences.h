// The events of a story in the order in which they happen, each repetition alone.
#pragma once

#include <cstdint>
#include <vector>

#include "notebook/model/scenario.h"
#include "wine/story/journal.h"

namespace nuvelta::wine {

struct Occurrence {
  uint32_t index = 0;       // of the event in the scenario
  uint32_t repetition = 0;  // counted from 0
  Duration at{};            // since the story's start
};

std::vector<Occurrence> Occurrences(const virtual_notebook::Scenario& scenario);

// How many of them have been played.
size_t Played(const std::vector<Entry>& journal);

}  // namespace nuvelta::wine
