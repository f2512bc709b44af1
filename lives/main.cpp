// explore: random lives of the service, held against the rules that every life keeps.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <optional>
#include <thread>

#include "lives/exploring.h"
#include "lives/life.h"
#include "lives/shrinking.h"
#include "notebook/scenario/scenario_reader.h"
#include "notebook/story/temporary_folder.h"

namespace nuvelta::explore {
namespace {

constexpr size_t kMostShrunk = 3;

void PrintBroken(const std::vector<std::string>& broken) {
  for (const std::string& rule : broken) std::printf("  %s\n", rule.c_str());
}

// The scenario file that replays the failure is printed, and kept when there is a
// folder for it.
void ShowFailure(uint64_t seed, const ExploreOptions& options, const std::string& folder) {
  const bool free_running = options.free_running;
  nlohmann::json life = MakeLife(seed, options.start_delay_ms);
  const auto broken = PlayApart(life, free_running);
  std::printf("life %llu%s:\n", static_cast<unsigned long long>(seed),
              broken.empty() ? " broke a rule once, and does not when played again" : "");
  PrintBroken(broken);
  if (!broken.empty() && !free_running) {
    life = Shrink(life, [&](const nlohmann::json& smaller) {
      return !PlayApart(smaller, free_running).empty();
    });
    std::printf("shrunk, it breaks:\n");
    PrintBroken(PlayApart(life, free_running));
  }
  const std::string text = life.dump(2) + '\n';
  std::printf("%s", text.c_str());
  std::string command = "explore --lives 1 --seed " + std::to_string(seed);
  if (options.start_delay_ms) {
    command += " --start-delay " + std::to_string(*options.start_delay_ms);
  }
  if (!folder.empty()) {
    std::filesystem::create_directories(folder);
    const auto file = std::filesystem::path(folder) / ("life_" + std::to_string(seed) + ".json");
    std::ofstream(file) << text;
    std::printf("kept as %s\n", file.c_str());
    command = "explore --replay " + file.string();
  }
  std::printf("to play it again: %s%s\n", command.c_str(), free_running ? " --free-running" : "");
}

int ShowExploration(const ExploreOptions& options, const std::string& folder) {
  const Exploration found = Explore(options);
  const Counts& counts = found.counts;
  std::printf("%llu lives in %.1f s (%.0f a second), %zu broke a rule\n",
              static_cast<unsigned long long>(found.lives), found.seconds,
              static_cast<double>(found.lives) / std::max(found.seconds, 0.001),
              found.failed.size());
  std::printf(
      "  %llu ended with the radio on as they had to, %llu with a crash that a fault "
      "permits\n",
      static_cast<unsigned long long>(found.healthy_ends),
      static_cast<unsigned long long>(found.crashes));
  if (!options.free_running) {
    std::printf(
        "  %llu processes, %llu steps, %llu tasks added, %llu cleanings, %llu runs, %llu "
        "set commands\n",
        static_cast<unsigned long long>(counts.processes),
        static_cast<unsigned long long>(counts.steps),
        static_cast<unsigned long long>(counts.added),
        static_cast<unsigned long long>(counts.cleaned),
        static_cast<unsigned long long>(counts.runs), static_cast<unsigned long long>(counts.sets));
    std::printf(
        "  held against their logs: %llu runs of %llu processes; not held: %llu processes without "
        "a log, %llu lives that lost lines of it, %llu that have it elsewhere\n",
        static_cast<unsigned long long>(counts.compared_runs),
        static_cast<unsigned long long>(counts.compared_processes),
        static_cast<unsigned long long>(counts.silent_processes),
        static_cast<unsigned long long>(counts.lost_logs),
        static_cast<unsigned long long>(counts.logs_elsewhere));
  }
  for (size_t i = 0; i < std::min(found.failed.size(), kMostShrunk); ++i) {
    ShowFailure(found.failed[i], options, folder);
  }
  return found.failed.empty() ? 0 : 1;
}

int Replay(const std::string& file, bool free_running) {
  // Read as a scenario first, for errors that name the place.
  virtual_notebook::ReadScenarioFile(file);
  const auto life = nlohmann::json::parse(std::ifstream(file));
  const auto broken = PlayApart(life, free_running);
  std::printf("%s: %zu rules broken\n", file.c_str(), broken.size());
  PrintBroken(broken);
  return broken.empty() ? 0 : 1;
}

}  // namespace
}  // namespace nuvelta::explore

// Read by ThreadSanitizer: a race ends the process, and so is a life's failure.
extern "C" const char* __tsan_default_options() { return "halt_on_error=1"; }  // NOLINT

int main(int argc, char** argv) {
  using namespace nuvelta::explore;

  std::setvbuf(stdout, nullptr, _IOLBF, 0);
  ExploreOptions options;
  options.jobs = std::max(1U, std::thread::hardware_concurrency());
  std::string replayed;
  std::optional<uint64_t> shown;
  std::string folder;
  CLI::App app{"Plays random lives of the service and checks the rules that every life keeps."};
  app.footer("Exit code: 0 when every life kept the rules, 1 when one did not, 2 for bad input.");
  app.add_option("--lives", options.lives, "How many lives")
      ->check(CLI::PositiveNumber)
      ->capture_default_str();
  app.add_option("--seed", options.first_seed, "The first life's seed")
      ->check(CLI::NonNegativeNumber)
      ->capture_default_str();
  app.add_option("--seconds", options.seconds, "Stop after this time")
      ->check(CLI::NonNegativeNumber);
  app.add_option("--jobs", options.jobs, "Lives at the same time")->check(CLI::PositiveNumber);
  app.add_flag("--free-running", options.free_running,
               "Let all threads of a life run at once; only its traces are checked");
  app.add_option("--start-delay", options.start_delay_ms,
                 "Milliseconds that one call of every starting service takes more")
      ->check(CLI::Range(0.0, 1000.0));
  app.add_option("--findings", folder, "Keep the shrunk lives in this folder");
  app.add_option("--replay", replayed, "Check the life in this scenario file instead");
  app.add_option("--show", shown, "Print the life of this seed instead");
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : 2;
  }
  try {
    nuvelta::story::PreferFoldersInMemory();
    if (shown) {
      std::printf("%s\n", MakeLife(*shown, options.start_delay_ms).dump(2).c_str());
      return 0;
    }
    if (!replayed.empty()) return Replay(replayed, options.free_running);
    return ShowExploration(options, folder);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "explore: %s\n", error.what());
    return 2;
  }
}
