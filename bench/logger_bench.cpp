// What WriteLog costs its caller beside a bare call of the same asynchronous
// logger with a message of equal length.
#include <benchmark/benchmark.h>
#include <spdlog/spdlog.h>

#include <algorithm>
#include <chrono>
#include <thread>
#include <vector>

#include "bench_support.h"
#include "common/logger.h"

namespace nuvelta::bench {
namespace {

// Each message is followed by a flush, so a burst fills half of the queue and
// the caller never waits for the writer.
constexpr int kBurst = 2000;
constexpr const char* kMessage = "find the same task ID, and the retry times(100) != 0";

template <class Call>
double NanosecondsPerCall(Call call) {
  const auto begin = std::chrono::steady_clock::now();
  for (int i = 0; i < kBurst; ++i) call(i);
  const std::chrono::duration<double, std::nano> time = std::chrono::steady_clock::now() - begin;
  // Lets the writer empty the queue.
  std::this_thread::sleep_for(std::chrono::milliseconds(60));
  return time.count() / kBurst;
}

double Median(std::vector<double> values) {
  std::ranges::sort(values);
  return values[values.size() / 2];
}

// Bursts of both in turn; the ratio is taken pair by pair.
void LoggerWriteLogBesideBare(benchmark::State& state) {
  for (auto _ : state) {
    RunInProcess([&] {
      CLogger::GetInstance().InitLogger();
      const auto bare = spdlog::get("MAServiceLog");
      std::vector<double> ratios;
      std::vector<double> ratios_to_finished_text;
      std::vector<double> bare_ns;
      for (int pair = 0; pair < 31; ++pair) {
        const double plain = NanosecondsPerCall([&](int number) {
          bare->info("{0} i :   {1} task({2})", "00001008", kMessage, number);
        });
        const double ours = NanosecondsPerCall(
            [&](int number) { LogInfo("CTaskManager::addTask", "%s task(%d)", kMessage, number); });
        const std::string text(fmt::format("00001008 i :   {} task(1000)", kMessage));
        const double finished = NanosecondsPerCall([&](int /*number*/) { bare->info(text); });
        ratios.push_back(ours / plain);
        ratios_to_finished_text.push_back(ours / finished);
        bare_ns.push_back(plain);
      }
      state.counters["ratio_median"] = Median(ratios);
      state.counters["to_finished_text"] = Median(ratios_to_finished_text);
      state.counters["bare_ns"] = Median(bare_ns);
    });
  }
}
BENCHMARK(LoggerWriteLogBesideBare)->Unit(benchmark::kSecond)->UseRealTime()->Iterations(1);

}  // namespace
}  // namespace nuvelta::bench
