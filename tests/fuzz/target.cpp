#include "target.h"

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

}  // namespace nuvelta::fuzz
