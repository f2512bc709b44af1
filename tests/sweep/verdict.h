// Judges a story in which a call of the operating system failed.
#pragma once

#include <string>

#include "fault_sweep.h"

namespace nuvelta::test {

// What is wrong with the story, each on a line of its own; empty when all is as it has
// to be.
std::string Judge(const Sound& sound, const Faulted& faulted);

}  // namespace nuvelta::test
