// The fault sweep over every shipped scenario: a fixed part of it, or all of it
// with NUVELTA_SWEEP=all in the environment.
#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>
#include <set>
#include <string_view>

#include "fault_sweep.h"
#include "verdict.h"

namespace nuvelta::test {
namespace {

SweepCounts g_counts;
std::set<std::string> g_calls;

bool IsAll() {
  const char* const wanted = std::getenv("NUVELTA_SWEEP");
  return wanted != nullptr && std::string_view(wanted) == "all";
}

class FaultSweep : public testing::TestWithParam<std::string> {};

TEST_P(FaultSweep, ComesToWhatTheFailedCallLeadsTo) {
  const Sound sound = TellSound(GetParam());
  const SweepCounts counts = Sweep(sound, IsAll(), [&](const Faulted& faulted) {
    g_calls.insert(faulted.fault.call);
    const std::string wrong = Judge(sound, faulted);
    if (!wrong.empty()) ADD_FAILURE() << sound.name << ", " << faulted.Describe() << wrong;
  });
  std::cout << sound.name << ": " << counts.injected << " faults injected in " << counts.cases
            << " stories\n";
  g_counts.stories += counts.stories;
  g_counts.injected += counts.injected;
  g_counts.cases += counts.cases;
}

INSTANTIATE_TEST_SUITE_P(, FaultSweep, testing::ValuesIn(ShippedScenarios()),
                         [](const auto& scenario) { return scenario.param; });

}  // namespace
}  // namespace nuvelta::test

int main(int argc, char** argv) {
  using nuvelta::test::g_calls;
  using nuvelta::test::g_counts;
  testing::InitGoogleTest(&argc, argv);
  const int result = RUN_ALL_TESTS();
  std::cout << g_counts.injected << " faults injected, in " << g_calls.size() << " calls and "
            << g_counts.cases << " stories of " << g_counts.stories << " played\n";
  // A sweep that injects nothing finds nothing.
  return result != 0 || g_counts.injected == 0 ? 1 : 0;
}
