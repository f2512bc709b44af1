#include "target.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>

namespace nuvelta::fuzz {

namespace {

std::map<std::string, Target>& Targets() {
  static std::map<std::string, Target> targets;
  return targets;
}

}  // namespace

void Require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "does not hold: %s\n", what);
  std::abort();
}

Registration::Registration(const char* name, Target target) { Targets()[name] = target; }

Target FindTarget(const std::string& name) {
  const auto& targets = Targets();
  if (targets.size() == 1) return targets.begin()->second;
  const auto found = targets.find(name);
  return found == targets.end() ? nullptr : found->second;
}

std::vector<uint8_t> Damaged(Bytes input, std::mt19937& random) {
  std::vector<uint8_t> damaged(input.begin(), input.end());
  const auto below = [&](size_t limit) { return random() % limit; };
  for (size_t left = 1 + below(4); left > 0 && !damaged.empty(); --left) {
    const size_t at = below(damaged.size());
    const auto place = damaged.begin() + static_cast<ptrdiff_t>(at);
    const size_t count = std::min(below(8), damaged.size() - at);
    switch (below(5)) {
      case 0:
        damaged[at] = static_cast<uint8_t>(random());
        break;
      case 1:
        damaged[at] = static_cast<uint8_t>(below(3));
        break;
      case 2:
        damaged.insert(place, 1 + below(3), static_cast<uint8_t>(below(2) * random()));
        break;
      case 3:
        damaged.erase(place, place + static_cast<ptrdiff_t>(count));
        break;
      default:
        if (below(4) == 0) damaged.resize(at);
        break;
    }
  }
  return damaged;
}

}  // namespace nuvelta::fuzz
