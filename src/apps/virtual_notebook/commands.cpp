#include "apps/virtual_notebook/commands.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "apps/story/story.h"
#include "apps/story/temporary_folder.h"
#include "apps/virtual_notebook/log_follower.h"
#include "apps/virtual_notebook/log_printer.h"
#include "apps/virtual_notebook/summary.h"
#include "platform/virtual/scenario/scenario_reader.h"

namespace nuvelta::story {

namespace fs = std::filesystem;
using virtual_notebook::ReadScenarioFile;
using virtual_notebook::Scenario;
using virtual_notebook::ScenarioError;

std::optional<std::vector<Scenario>> ReadAll(const std::vector<std::string>& files) {
  std::vector<Scenario> scenarios;
  bool good = true;
  for (const std::string& file : files) {
    try {
      scenarios.push_back(ReadScenarioFile(file));
    } catch (const ScenarioError& error) {
      std::fprintf(stderr, "%s\n", error.what());
      good = false;
    }
  }
  return good ? std::optional(std::move(scenarios)) : std::nullopt;
}

int ShowSummary(const Summary& summary, size_t number, size_t count, bool json) {
  if (json) {
    std::printf("%s", SummaryJson(summary).c_str());
  } else if (count > 1) {
    std::printf("[%zu/%zu] %s\n", number, count, SummaryLine(summary).c_str());
  } else {
    std::printf("\n%s", SummaryTable(summary).c_str());
  }
  std::fflush(stdout);
  if (summary.report.Behaved()) return kRanToItsEnd;
  if (count > 1) std::fprintf(stderr, "%s", SummaryTable(summary).c_str());
  return kMisbehaved;
}

namespace {

Summary PlayOne(const std::string& file, const Scenario& scenario, const RunOptions& options,
                const fs::path& root, bool show_log) {
  const fs::path disk = root / fs::path(file).stem();
  const fs::path log_folder = LogFolder(scenario, disk);
  Summary summary;
  summary.file = file;
  summary.title = scenario.title;
  const auto begin = std::chrono::steady_clock::now();
  {
    LogPrinter printer(stdout);
    std::optional<LogFollower> follower;
    if (show_log) {
      follower.emplace(log_folder, LogStamp(scenario),
                       [&](const std::string& text) { printer.Print(text); });
    }
    summary.report =
        Play(scenario, {.disk = disk, .seed = options.seed, .free_running = options.free_running});
  }
  summary.real_time = std::chrono::steady_clock::now() - begin;
  const std::string log = ReadLog(scenario, disk);
  if (!log.empty()) summary.counts = CountLog(log);
  if (!options.log_dir.empty()) summary.log_folder = log_folder.string();
  return summary;
}

int PlayAll(const RunOptions& options, const std::vector<Scenario>& scenarios,
            const fs::path& root) {
  const bool several = scenarios.size() > 1;
  int result = kRanToItsEnd;
  for (size_t i = 0; i < scenarios.size(); ++i) {
    const Summary summary =
        PlayOne(options.files[i], scenarios[i], options, root, !several && !options.json);
    result = std::max(result, ShowSummary(summary, i + 1, scenarios.size(), options.json));
  }
  return result;
}

}  // namespace

int Run(const RunOptions& options) {
  const auto scenarios = ReadAll(options.files);
  if (!scenarios) return kBadInput;
  try {
    if (!options.log_dir.empty()) {
      fs::create_directories(options.log_dir);
      return PlayAll(options, *scenarios, options.log_dir);
    }
    const TemporaryFolder folder;
    return PlayAll(options, *scenarios, folder.Path());
  } catch (const fs::filesystem_error& error) {
    std::fprintf(stderr, "the log folder cannot be used: %s\n", error.what());
    return kBadInput;
  }
}

int List(const std::string& folder) {
  std::error_code error;
  std::vector<std::string> files;
  for (const auto& file : fs::directory_iterator(folder, error)) {
    if (file.path().extension() == ".json") files.push_back(file.path().string());
  }
  if (error) {
    std::fprintf(stderr, "%s: %s; expected a folder of scenarios\n", folder.c_str(),
                 error.message().c_str());
    return kBadInput;
  }
  std::ranges::sort(files);
  const auto scenarios = ReadAll(files);
  if (!scenarios) return kBadInput;
  for (size_t i = 0; i < files.size(); ++i) {
    std::printf("%-48s %s\n", files[i].c_str(), (*scenarios)[i].title.c_str());
  }
  return kRanToItsEnd;
}

int Check(const std::vector<std::string>& files) {
  const auto scenarios = ReadAll(files);
  if (!scenarios) return kBadInput;
  std::printf("%zu scenario%s read, nothing wrong\n", files.size(), files.size() == 1 ? "" : "s");
  return kRanToItsEnd;
}

}  // namespace nuvelta::story
