// The doctor on notebooks made by dice: it says what the service's next run comes to, and
// sends no set command.
#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <optional>
#include <string>

#include "lives/life.h"
#include "story_support.h"
#include "support/doctor.h"
#include "support/log_files.h"

namespace nuvelta::test {
namespace {

using namespace std::chrono_literals;
using explore::Dice;
using nlohmann::json;
using support::Cause;

constexpr uint64_t kLives = 300;
// Behind all runs of the first trigger.
constexpr auto kVisit = 900s;
constexpr const char* kVisitTime = "2026-11-16 01:13:46.000";

// A notebook with a started service that may change while it runs; its log is on.
json MakeStory(uint64_t seed) {
  Dice dice(seed);
  json story{{"title", "doctor " + std::to_string(seed)}, {"seed", seed & 0x7FFFFFFFU}};
  story["notebook"] = explore::MakeNotebook(dice);
  if (story["notebook"].contains("registry")) {
    story["notebook"]["registry"].erase("SOFTWARE\\Nuvelta Wireless Inc\\Logs");
  }
  // More often than in lives, which are about other things.
  if (dice.Percent(25)) {
    story["notebook"]["registry"][explore::kSettingsKey]["SupportVerifyPlatform"] =
        explore::MakeSwitchValue(dice);
  }
  story["events"] = json::array({{{"do", "start"}, {"at", 0}}});
  for (auto left = dice.Between(0, 2); left > 0; --left) {
    json change = explore::MakeModemChange(dice);
    change["do"] = "modem_changes";
    change["at"] = 800;
    story["events"].push_back(change);
  }
  return story;
}

// An answer at the very end of the service's two seconds is in time or not as the threads
// take turns, which is another dice.
bool IsAtTheLimit(const json& story) {
  const std::string text = story.dump();
  return text.find("_ms\":2000,") != std::string::npos ||
         text.find("_ms\":2000}") != std::string::npos;
}

// The first run behind the visit, and whether one was under way.
struct NextRun final : support::LogListener {
  void OnRun(const support::Run& run) override {
    if (run.begin.time < kVisitTime) {
      under_way = under_way || run.end.time >= kVisitTime;
    } else if (!next) {
      next = run;
    }
  }
  void OnProcessEnds(const support::Process& process) override {
    under_way = under_way || (process.begin.time < kVisitTime && process.unfinished.line != 0);
  }
  std::optional<support::Run> next;
  bool under_way = false;
};

void PlayOn(json story, NextRun& next) {
  story["events"].push_back({{"do", "arrival"}, {"at", 900}});
  const Scenario scenario = explore::ReadLife(story);
  const TemporaryFolder disk;
  story::Play(scenario, {.disk = disk.Path()});
  std::error_code error;
  const auto folder = story::LogFolder(scenario, disk.Path());
  support::ReadLogFiles(support::LogFilesIn(folder, error), next);
}

support::Diagnosis Visit(const json& story, StoryReport& report) {
  const Scenario scenario = explore::ReadLife(story);
  const TemporaryFolder disk;
  support::Diagnosis diagnosis;
  report = story::Play(
      scenario, {.disk = disk.Path(),
                 .visit = {.body = [&] { diagnosis = support::Diagnose({}); }, .at = kVisit}});
  return diagnosis;
}

uint64_t CountOf(const char* variable, uint64_t otherwise) {
  const char* const text = std::getenv(variable);
  return text == nullptr ? otherwise : std::strtoull(text, nullptr, 10);
}

TEST(DoctorLives, SaysWhatTheNextRunComesTo) {
  // For a longer measurement by command.
  const uint64_t lives = CountOf("NUVELTA_DOCTOR_LIVES", kLives);
  const uint64_t first = CountOf("NUVELTA_DOCTOR_SEED", 1);
  std::map<std::string, uint64_t> causes;
  uint64_t skipped = 0;
  for (uint64_t seed = first; seed < first + lives; ++seed) {
    const json story = MakeStory(seed);
    if (IsAtTheLimit(story)) continue;
    NextRun next;
    PlayOn(story, next);
    // The visit would come into the middle of a run, or of a restart.
    if (!next.next || next.under_way) {
      ++skipped;
      continue;
    }
    StoryReport report;
    const support::Diagnosis diagnosis = Visit(story, report);
    const bool would_set = diagnosis.run.cause == Cause::kWouldSwitchOn;
    const bool sets = next.next->evidence.set.begin.line != 0;
    ++causes[support::InfoOf(diagnosis.run.cause).id];
    EXPECT_EQ(would_set, sets) << story.dump();
    if (!sets) {
      EXPECT_STREQ(support::InfoOf(diagnosis.run.cause).id, support::InfoOf(next.next->cause).id)
          << story.dump();
    }
    const auto start = virtual_notebook::StartOf(explore::ReadLife(story));
    for (const auto& command : report.commands) {
      EXPECT_FALSE(command.set && command.at >= start + kVisit) << story.dump();
    }
    EXPECT_EQ(diagnosis.modem.query.sets_held_back, 0U);
    EXPECT_EQ(report.leaked_handles, 0U) << story.dump();
    EXPECT_EQ(report.deadlock, "") << story.dump();
  }
  std::string counts;
  for (const auto& [cause, count] : causes) counts += cause + " " + std::to_string(count) + "\n";
  if (first != 1 || lives != kLives) {
    std::printf("%ssituations skipped %llu\n", counts.c_str(),
                static_cast<unsigned long long>(skipped));
  }
  EXPECT_GE(causes.size(), 10U) << counts;
  EXPECT_LT(skipped, lives / 4);
}

}  // namespace
}  // namespace nuvelta::test
