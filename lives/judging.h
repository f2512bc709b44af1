// Plays a life and holds it against the rules.
#pragma once

#include <string>
#include <vector>

#include "lives/watch.h"
#include "notebook/model/scenario.h"

namespace nuvelta::explore {

struct LifeReport {
  std::vector<std::string> broken;  // the rules that did not hold
  Counts counts;
  bool crashed = false;      // where a fault permits it
  bool healthy_end = false;  // the radio had to be on at the end, and was looked at
};

// With `free_running` all threads run at once, and only what the life leaves behind
// is checked. One life at a time in a process.
LifeReport PlayLife(const virtual_notebook::Scenario& life, bool free_running);

// The rules that the text of a log shows, with no more order than `free_running` has.
std::vector<std::string> CheckLog(const std::string& log, bool free_running);

}  // namespace nuvelta::explore
