// Stories in which one call of the operating system fails: which there are, and
// what each left behind.
#pragma once

#include <cstdint>
#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "story_lines.h"
#include "story_support.h"

namespace nuvelta::test {

using virtual_notebook::Fault;
using virtual_notebook::FiredFault;

// A shipped scenario, and what it comes to when nothing is added to it.
struct Sound {
  std::string name;
  nlohmann::json document;
  Scenario scenario;
  Told told;
  Told stopped;  // stopped when a story with a lasting fault is
  StoryLines lines;
  StoryLines stopped_lines;
};

// The same with one fault more.
struct Faulted {
  Fault fault;
  Scenario scenario{};
  Told told;
  std::vector<FiredFault> fired{};  // of `fault`; the scenario's own are left out

  bool Lasting() const { return fault.count == 0; }
  // "CreateEventW #2 fails with 8, once"
  std::string Describe() const;
};

Sound TellSound(const std::string& name);

struct SweepCounts {
  uint64_t stories = 0;   // played, those that only found a call's last place included
  uint64_t injected = 0;  // faults that fired, each failing call counted
  uint64_t cases = 0;     // stories in which one fired
};

// Every call that the scenario makes is failed in turn, in each way it can fail,
// once and for good; `judge` sees each story in which a fault fired. Unless `all`,
// only a part is played, chosen by hashes, so that it is always the same.
SweepCounts Sweep(const Sound& sound, bool all, const std::function<void(const Faulted&)>& judge);

}  // namespace nuvelta::test
