// Whole stories: how long one takes, and what ten thousand in one process take.
#include <benchmark/benchmark.h>

#include "bench_support.h"
#include "notebook/story/story.h"

namespace nuvelta::bench {
namespace {

// 30 runs with 2 s between them, 60 virtual seconds; at most 20 ms are wanted.
void GiveUpStory(benchmark::State& state) {
  const TemporaryFolder disk;
  const auto scenario = ShippedScenario("modem_never_comes");
  double virtual_seconds = 0;
  for (auto _ : state) {
    const auto report = story::Play(scenario, {.disk = disk.Path()});
    virtual_seconds = std::chrono::duration<double>(report.virtual_time).count();
  }
  state.counters["virtual_s"] = virtual_seconds;
}
BENCHMARK(GiveUpStory)->Unit(benchmark::kMillisecond)->UseRealTime();

// Start, one arrival, stop. The resident memory after the first thousand lives
// and after all of them tells whether anything is left behind.
void ServiceLives(benchmark::State& state) {
  const TemporaryFolder disk;
  auto scenario = ShippedScenario("healthy_arrival");
  constexpr int kLives = 10000;
  constexpr int kWarmUp = 1000;
  for (auto _ : state) {
    size_t after_warm_up = 0;
    for (int life = 0; life < kLives; ++life) {
      if (life == kWarmUp) after_warm_up = ResidentBytes();
      scenario.seed = static_cast<uint64_t>(life);
      const auto report = story::Play(scenario, {.disk = disk.Path()});
      if (report.radio_after != 1 || !report.Behaved()) state.SkipWithError("a life went wrong");
    }
    state.counters["lives"] = kLives;
    state.counters["MiB_after_1000"] = static_cast<double>(after_warm_up) / 1048576.0;
    state.counters["MiB_after_all"] = static_cast<double>(ResidentBytes()) / 1048576.0;
  }
}
BENCHMARK(ServiceLives)->Unit(benchmark::kSecond)->UseRealTime()->Iterations(1);

}  // namespace
}  // namespace nuvelta::bench
