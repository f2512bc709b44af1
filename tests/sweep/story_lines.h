// The log of a story, line by line, with the trace scopes in which each was
// written.
#pragma once

#include <string>
#include <vector>

#include "story_support.h"

namespace nuvelta::test {

struct StoryLine {
  std::string thread;
  std::string scope;  // the innermost one open on the thread, empty for none
  std::string text;   // "i :   NService::Run entry"
};

struct StoryLines {
  std::vector<StoryLine> lines;
  std::vector<std::string> faults;  // of form: no line at all, times that run backwards
};

StoryLines ReadLines(const Told& told);

}  // namespace nuvelta::test
