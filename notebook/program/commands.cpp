#include "notebook/program/commands.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <filesystem>

#include "notebook/program/log_follower.h"
#include "notebook/program/log_printer.h"
#include "notebook/program/progress.h"
#include "notebook/program/service_watch.h"
#include "notebook/program/story_folders.h"
#include "notebook/program/summary.h"
#include "notebook/scenario/call_lists.h"
#include "notebook/scenario/scenario_reader.h"
#include "notebook/story/interruption.h"
#include "notebook/story/log_files.h"
#include "notebook/story/marked_folder.h"
#include "notebook/story/standard_output.h"
#include "notebook/story/story.h"
#include "notebook/story/temporary_folder.h"

namespace nuvelta::story {

namespace fs = std::filesystem;
using virtual_notebook::ReadScenarioFile;
using virtual_notebook::Scenario;
using virtual_notebook::ScenarioError;

namespace {

constexpr const char* kProgram = "virtual_notebook";
constexpr size_t kTitleColumn = 48;

Scenario ReadStandardInput() {
  constexpr const char* kName = "standard input";
  std::string text(virtual_notebook::kLargestScenario + 1, '\0');
  text.resize(std::fread(text.data(), 1, text.size(), stdin));
  if (std::ferror(stdin) != 0) {
    throw ScenarioError(std::string(kName) + ": cannot be read; expected a scenario");
  }
  if (text.size() > virtual_notebook::kLargestScenario) {
    throw ScenarioError(std::string(kName) + ": too large; expected a scenario of at most 4 MiB");
  }
  return virtual_notebook::ReadScenarioText(text, kName, "");
}

}  // namespace

std::optional<std::vector<Scenario>> ReadAll(const std::vector<std::string>& files) {
  std::vector<Scenario> scenarios;
  bool good = true;
  for (const std::string& file : files) {
    try {
      scenarios.push_back(file == kStandardInput ? ReadStandardInput() : ReadScenarioFile(file));
    } catch (const ScenarioError& error) {
      std::fprintf(stderr, "%s\n", error.what());
      good = false;
    }
  }
  return good ? std::optional(std::move(scenarios)) : std::nullopt;
}

int ShowSummary(const Summary& summary, size_t number, size_t count, bool json) {
  if (json) {
    StandardOutput().Print(SummaryJson(summary));
  } else if (count > 1) {
    StandardOutput().Print("[" + std::to_string(number) + "/" + std::to_string(count) + "] " +
                           SummaryLine(summary) + "\n");
  } else {
    StandardOutput().Print("\n" + SummaryTable(summary));
  }
  const bool behaved = summary.report.Behaved();
  if (!behaved && count > 1) std::fprintf(stderr, "%s", SummaryTable(summary).c_str());
  if (!summary.log_lost.empty()) {
    std::fprintf(stderr, "%s: the log could not be written: %s\n", summary.file.c_str(),
                 summary.log_lost.c_str());
    return kNotWritten;
  }
  return behaved ? kRanToItsEnd : kMisbehaved;
}

namespace {

Summary PlayOne(const std::string& file, const Scenario& scenario, const RunOptions& options,
                const fs::path& disk, bool show_log) {
  const fs::path log_folder = LogFolder(scenario, disk);
  Summary summary;
  summary.file = file;
  summary.title = scenario.title;
  Progress progress(file);
  const auto begin = std::chrono::steady_clock::now();
  {
    const ServiceWatch watch;
    LogPrinter printer(StandardOutput());
    std::optional<LogFollower> follower;
    if (show_log) {
      follower.emplace(log_folder, LogStamp(scenario),
                       [&](const std::string& text) { printer.Print(text); });
    }
    summary.report = Play(scenario, {.disk = disk,
                                     .seed = options.seed,
                                     .free_running = options.free_running,
                                     .go_on = [&](virtual_notebook::Nanoseconds story_time) {
                                       progress.Tell(story_time);
                                       return NotedInterruption() == 0;
                                     }});
    summary.counts = watch.Counts();
    summary.log_lost = watch.Lost();
  }
  summary.real_time = std::chrono::steady_clock::now() - begin;
  summary.why = WhyOf(LogFilesSince(log_folder, LogStamp(scenario)));
  if (!options.log_dir.empty()) summary.log_folder = log_folder.string();
  return summary;
}

// The command that plays the story again as it was.
std::string Replay(const std::string& file, const Scenario& scenario, const RunOptions& options) {
  return std::string(kProgram) + " run " + file + " --seed " +
         std::to_string(options.seed.value_or(scenario.seed)) +
         (options.free_running ? " --free" : "");
}

int PlayAll(const RunOptions& options, const std::vector<Scenario>& scenarios,
            const std::vector<fs::path>& disks) {
  const size_t count = scenarios.size();
  int result = kRanToItsEnd;
  size_t played = 0;
  for (; played < count && NotedInterruption() == 0; ++played) {
    std::optional<MarkedFolder> held;
    if (!options.log_dir.empty()) {
      fs::create_directories(disks[played]);
      held.emplace(disks[played]);
    }
    const Summary summary = PlayOne(options.files[played], scenarios[played], options,
                                    disks[played], count == 1 && !options.json);
    const int deserved = ShowSummary(summary, played + 1, count, options.json);
    if (deserved != kRanToItsEnd) {
      const std::string command = Replay(options.files[played], scenarios[played], options);
      std::fprintf(stderr, "to play it again: %s\n", command.c_str());
    }
    result = std::max(result, deserved);
  }
  const int signal = NotedInterruption();
  if (signal == 0) return result;
  if (played < count && signal != SIGPIPE) {
    std::fprintf(stderr, "%zu of %zu stories were begun\n", played, count);
  }
  return EndInterrupted(kProgram, signal);
}

// Where each story's notebook has its disk. Empty, after saying why, when one of them
// is not to be written into.
std::vector<fs::path> DisksFor(const RunOptions& options, const std::vector<Scenario>& scenarios,
                               const fs::path& root) {
  std::vector<fs::path> disks;
  for (const std::string& name : FolderNames(options.files)) {
    disks.push_back(root / name);
    const std::string why = WhyNotInto(disks.back(), scenarios[disks.size() - 1]);
    if (why.empty()) continue;
    std::fprintf(stderr, "%s\n", why.c_str());
    return {};
  }
  return disks;
}

}  // namespace

int Run(const RunOptions& options) {
  if (std::ranges::count(options.files, kStandardInput) > 1) {
    std::fprintf(stderr, "-: given more than once; standard input holds one scenario\n");
    return kBadInput;
  }
  const auto scenarios = ReadAll(options.files);
  if (!scenarios) return kBadInput;
  TakeInterruptions();
  std::optional<TemporaryFolder> temporary;
  fs::path root = options.log_dir;
  // Of a folder that the caller has named, the name may be to blame.
  int blame = root.empty() ? kNotWritten : kBadInput;
  try {
    if (root.empty()) {
      root = temporary.emplace().Path();
    } else {
      fs::create_directories(root);
    }
    const std::vector<fs::path> disks = DisksFor(options, *scenarios, root);
    if (disks.empty()) return kBadInput;
    blame = kNotWritten;
    return PlayAll(options, *scenarios, disks);
  } catch (const fs::filesystem_error& error) {
    const fs::path path = error.path1().empty() ? fs::path("$TMPDIR") : error.path1();
    std::fprintf(stderr, "%s: cannot hold the log files: %s\n", path.c_str(),
                 error.code().message().c_str());
    return blame;
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
  if (files.empty()) std::fprintf(stderr, "%s: no scenario (*.json) in it\n", folder.c_str());
  std::ranges::sort(files);
  const auto scenarios = ReadAll(files);
  if (!scenarios) return kBadInput;
  for (size_t i = 0; i < files.size(); ++i) {
    std::string line = files[i];
    line.resize(std::max(line.size(), kTitleColumn), ' ');
    StandardOutput().Print(line + " " + (*scenarios)[i].title + "\n");
  }
  return kRanToItsEnd;
}

int Check(const std::vector<std::string>& files) {
  const auto scenarios = ReadAll(files);
  if (!scenarios) return kBadInput;
  StandardOutput().Print(std::to_string(files.size()) + " scenario" +
                         (files.size() == 1 ? "" : "s") + " read, nothing wrong\n");
  return kRanToItsEnd;
}

int Calls(bool schema) {
  StandardOutput().Print(schema ? virtual_notebook::CallDefinitions()
                                : virtual_notebook::CallTable());
  return kRanToItsEnd;
}

}  // namespace nuvelta::story
