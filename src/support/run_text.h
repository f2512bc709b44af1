// What a run saw and did, in a support engineer's words.
#pragma once

#include <string>
#include <vector>

#include "support/log_story.h"

namespace nuvelta::support {

struct ChainLink {
  std::string label;  // "modem", "platform", ...
  std::string text;
};

// The decision of a run, step by step, so far as it came. Fit to be printed.
std::vector<ChainLink> DecisionChain(const Run& run);

// "service start", "network adapter arrived", ...
const char* NameOf(TriggerKind kind);
// What a note says, with its text where it has one. Fit to be printed.
std::string TextOf(const Note& note);

// The escape sequence by which a terminal colours what follows.
const char* ColourOf(Verdict verdict);

}  // namespace nuvelta::support
