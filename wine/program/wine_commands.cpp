#include "wine/program/wine_commands.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <memory>

#include "notebook/program/commands.h"
#include "notebook/program/log_printer.h"
#include "notebook/program/story_folders.h"
#include "notebook/story/interruption.h"
#include "notebook/story/standard_output.h"
#include "support/explain.h"
#include "wine/program/bad_input.h"
#include "wine/program/parity.h"
#include "wine/program/playing.h"
#include "wine/program/unplayable.h"
#include "wine/program/wine_prefix.h"

namespace nuvelta::wine_notebook {

using story::kBadInput;
using story::kRanToItsEnd;
using virtual_notebook::Scenario;

namespace {

story::Summary PlayOne(WinePrefix& prefix, const std::string& file, const Scenario& scenario,
                       bool show_log) {
  story::LogPrinter printer(story::StandardOutput());
  const auto print = [&](const std::string& text) { printer.Print(text); };
  const auto begin = std::chrono::steady_clock::now();
  const WineStory played = PlayUnderWine(
      prefix, file, scenario, show_log ? std::function<void(const std::string&)>(print) : nullptr);
  story::Summary summary{.file = file,
                         .title = scenario.title,
                         .report = played.report,
                         .counts = {},
                         .why = played.why,
                         .real_time = std::chrono::steady_clock::now() - begin,
                         .log_folder = played.log_folder.string()};
  if (!played.log.empty()) summary.counts = story::CountLog(played.log);
  return summary;
}

// The driver reads the scenario again, from its file.
bool AreFiles(const std::vector<std::string>& files) {
  if (std::ranges::find(files, story::kStandardInput) == files.end()) return true;
  std::fprintf(stderr, "-: standard input is played by virtual_notebook only; expected a file\n");
  return false;
}

bool CanBePlayed(const std::string& file, const Scenario& scenario) {
  const auto why = WhyNotUnderWine(scenario);
  if (!why) return true;
  std::fprintf(stderr, "%s: cannot be played under Wine, only by virtual_notebook: %s\n",
               file.c_str(), why->c_str());
  return false;
}

// What is missing is told before anything is made or changed.
std::unique_ptr<WinePrefix> OpenEmpty(const Places& places) {
  CheckBinaries(places.binaries);
  PrefixFolder::Usable(places.prefix);
  return std::make_unique<WinePrefix>(places.prefix);
}

std::unique_ptr<WinePrefix> Open(const Places& places) {
  auto prefix = OpenEmpty(places);
  prefix->Install(places.binaries);
  return prefix;
}

std::unique_ptr<WinePrefix> OpenWithPackage(const Places& places) {
  if (!std::filesystem::is_regular_file(places.package)) {
    throw BadInput("\"" + places.package.string() +
                   "\" is missing; expected a package (--installed)");
  }
  auto prefix = OpenEmpty(places);
  prefix->Prepare(places.binaries);
  prefix->InstallPackage(places.package, places.binaries);
  return prefix;
}

}  // namespace

int Run(const Places& places, const std::vector<std::string>& files, bool json) {
  if (!AreFiles(files)) return kBadInput;
  const auto scenarios = story::ReadAll(files);
  if (!scenarios) return kBadInput;
  for (size_t i = 0; i < files.size(); ++i) {
    if (!CanBePlayed(files[i], (*scenarios)[i])) return kBadInput;
  }
  const auto prefix = places.package.empty() ? Open(places) : OpenWithPackage(places);
  int result = kRanToItsEnd;
  for (size_t i = 0; i < files.size(); ++i) {
    story::Summary summary =
        PlayOne(*prefix, files[i], (*scenarios)[i], files.size() == 1 && !json);
    // The next story takes the log files' place.
    if (i + 1 < files.size()) summary.log_folder.clear();
    const int deserved = story::ShowSummary(summary, i + 1, files.size(), json);
    if (deserved != kRanToItsEnd) {
      std::fprintf(stderr, "to play it again: ./run %s\n", files[i].c_str());
    }
    result = std::max(result, deserved);
  }
  if (prefix->HasPackage()) prefix->RemovePackage();
  return result;
}

int Parity(const Places& places, const std::vector<std::string>& files) {
  if (!AreFiles(files)) return kBadInput;
  const auto scenarios = story::ReadAll(files);
  if (!scenarios) return kBadInput;
  const auto prefix = Open(places);
  return CompareAll(*prefix, files, *scenarios);
}

int Support(const Places& places, const SupportOrder& order) {
  CheckSupport(places.binaries);
  if (!AreFiles({order.file})) return support::kBadInput;
  const auto scenarios = story::ReadAll({order.file});
  if (!scenarios || !CanBePlayed(order.file, scenarios->front())) return support::kBadInput;
  const auto prefix = Open(places);
  const Look look =
      LookUnderWine(*prefix, order.file, scenarios->front(), order.moment, order.arguments);
  story::StandardOutput().Print(look.output);
  std::fwrite(look.errors.data(), 1, look.errors.size(), stderr);
  return look.exit_code;
}

int Drive(const Places& places, const std::vector<std::string>& arguments) {
  const auto prefix = Open(places);
  auto driver = prefix->RunDriver(arguments);
  try {
    for (bool runs = true; runs;) {
      runs = driver->Wait(std::chrono::milliseconds(50));
      for (const std::string& line : driver->Lines()) std::printf("%s\n", line.c_str());
      std::fflush(stdout);
      story::ThrowIfInterrupted();
    }
  } catch (...) {
    driver.reset();
    prefix->Repair();
    throw;
  }
  return driver->ExitCode();
}

int Prepare(const Places& places) {
  OpenEmpty(places)->Prepare(places.binaries);
  return kRanToItsEnd;
}

int Clean(const Places& places) {
  const auto folder = PrefixFolder::Usable(places.prefix);
  if (!std::filesystem::exists(folder / "drive_c")) {
    std::printf("no story was played in %s: nothing is to be undone\n", folder.c_str());
    return kRanToItsEnd;
  }
  const WinePrefix prefix(places.prefix);
  if (prefix.Repair()) return kRanToItsEnd;
  std::fprintf(stderr, "wine_notebook: not all could be undone; the folder %s can be deleted\n",
               folder.c_str());
  return kWineFailed;
}

}  // namespace nuvelta::wine_notebook
