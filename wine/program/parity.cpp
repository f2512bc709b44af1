#include "wine/program/parity.h"

#include <cstdint>
#include <cstdio>

#include "notebook/program/commands.h"
#include "notebook/story/interruption.h"
#include "notebook/story/story.h"
#include "notebook/story/temporary_folder.h"
#include "wine/program/comparison.h"
#include "wine/program/journal_report.h"
#include "wine/program/playing.h"
#include "wine/program/unplayable.h"

namespace nuvelta::wine_notebook {

using virtual_notebook::Scenario;

namespace {

// Threads may take turns at one moment in any order; so many are tried.
constexpr uint64_t kSeeds = 20;

Telling PlayVirtually(const Scenario& scenario, uint64_t seed) {
  const story::TemporaryFolder disk;
  const auto report = story::Play(scenario, {.disk = disk.Path(), .seed = seed});
  return TellingOf(report, story::ReadLog(scenario, disk.Path()));
}

struct Verdict {
  Likeness likeness = Likeness::kDiffers;
  uint64_t seed = 0;  // that comes nearest
  Telling nearest;    // its telling
};

Verdict Judge(const Telling& wine, const Scenario& scenario) {
  Verdict verdict;
  size_t least = SIZE_MAX;
  for (uint64_t seed = 1; seed <= kSeeds && verdict.likeness != Likeness::kWhole; ++seed) {
    Telling telling = PlayVirtually(scenario, seed);
    const Likeness likeness = Compare(wine, telling);
    const size_t records = RecordsFromFirstDifference(wine, telling);
    if (likeness < verdict.likeness || (likeness == verdict.likeness && records >= least)) continue;
    verdict = {.likeness = likeness, .seed = seed, .nearest = std::move(telling)};
    least = records;
  }
  return verdict;
}

void PrintReplay(const std::string& file) {
  std::printf("  to play it again: tests/wine/parity %s\n", file.c_str());
}

// Prints the story's line; whether it is the same both ways.
bool CompareOne(WinePrefix& prefix, const std::string& file, const Scenario& scenario) {
  const WineStory story = PlayUnderWine(prefix, file, scenario, {});
  const Telling wine = TellingOf(story.report, story.log);
  const Verdict verdict = Judge(wine, scenario);
  const std::vector<std::string> disagreements = StatusDisagreements(story.journal);
  size_t records = 0;
  for (const ProcessLog& process : wine.log) records += process.size();
  if (verdict.likeness != Likeness::kDiffers && disagreements.empty()) {
    std::printf("%s: same, %zu records, %s (seed %llu)\n", file.c_str(), records,
                verdict.likeness == Likeness::kWhole ? "in one order" : "thread by thread",
                static_cast<unsigned long long>(verdict.seed));
    return true;
  }
  std::printf("%s: DIFFERS (nearest: seed %llu)\n", file.c_str(),
              static_cast<unsigned long long>(verdict.seed));
  for (const std::string& line : disagreements) std::printf("  status, %s\n", line.c_str());
  if (verdict.likeness == Likeness::kDiffers) {
    std::printf("%s", Difference(wine, verdict.nearest).c_str());
  }
  if (!story.report.deadlock.empty()) {
    std::printf("  stuck under Wine: %s\n", story.report.deadlock.c_str());
  }
  PrintReplay(file);
  return false;
}

}  // namespace

int CompareAll(WinePrefix& prefix, const std::vector<std::string>& files,
               const std::vector<Scenario>& scenarios) {
  size_t same = 0;
  size_t different = 0;
  size_t not_played = 0;
  for (size_t i = 0; i < files.size(); ++i) {
    if (const auto why = WhyNotUnderWine(scenarios[i])) {
      ++not_played;
      std::printf("%s: not played under Wine: %s\n", files[i].c_str(), why->c_str());
      continue;
    }
    try {
      const bool alike = CompareOne(prefix, files[i], scenarios[i]);
      ++(alike ? same : different);
    } catch (const story::Interrupted&) {
      throw;
    } catch (const std::runtime_error& error) {
      ++different;
      std::printf("%s: FAILED: %s\n", files[i].c_str(), error.what());
      PrintReplay(files[i]);
    }
    std::fflush(stdout);
  }
  std::printf("%zu same, %zu different, %zu not played under Wine\n", same, different, not_played);
  return different == 0 ? story::kRanToItsEnd : story::kMisbehaved;
}

}  // namespace nuvelta::wine_notebook
