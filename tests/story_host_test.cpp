// What the service reports to its host, what its host does with it, and the log's folder.
#include <gtest/gtest.h>

#include <filesystem>
#include <map>

#include "story_support.h"

namespace nuvelta::test {
namespace {

// "state/check point/wait hint/controls" of each report.
std::string Reports(const StoryReport& report) {
  std::string text;
  for (const auto& [process, status] : report.status_reports) {
    EXPECT_EQ(status.dwServiceType, 16U);
    EXPECT_EQ(status.dwWin32ExitCode, 0U);
    text += std::to_string(status.dwCurrentState) + "/" + std::to_string(status.dwCheckPoint) +
            "/" + std::to_string(status.dwWaitHint) + "/" +
            std::to_string(status.dwControlsAccepted) + " ";
  }
  return text;
}

TEST(StoryHost, CountsItsCheckPoints) {
  EXPECT_EQ(Reports(TellShipped("radio_already_on").report),
            "2/1/1000/0 4/0/0/129 3/2/0/129 1/0/0/129 ");
  EXPECT_EQ(Reports(TellShipped("pause_and_shutdown").report),
            "2/1/1000/0 4/0/0/129 6/2/0/129 5/3/0/129 3/4/0/129 1/0/0/129 ");
  // A new process counts afresh.
  EXPECT_EQ(Reports(TellShipped("self_restart").report),
            "2/1/1000/0 4/0/0/129 2/1/1000/0 4/0/0/129 3/2/0/129 1/0/0/129 ");
}

std::string Refusals(const StoryReport& report) {
  std::string text;
  for (const auto& refused : report.refused_controls) text += Describe(refused) + "\n";
  return text;
}

TEST(StoryHost, GetsOnlyTheControlsThatItAccepts) {
  const Told told = TellShipped("controls_refused");
  EXPECT_EQ(Refusals(told.report),
            "1.000 s: control 1, error 1052, the service does not accept it\n"
            "1.000 s: control 4, error 1061, the service is starting or stopping\n"
            "1.000 s: control 14, not delivered\n"
            "10.000 s: control 2, error 1052, the service does not accept it\n"
            "10.000 s: control 3, error 1052, the service does not accept it\n"
            "10.000 s: control 5, not delivered\n"
            "10.000 s: control 6, error 1052, the service does not accept it\n"
            "10.000 s: control 20, error 87, there is no such control\n"
            "10.000 s: control 13, not delivered\n"
            "13.000 s: control 1, error 1061, the service is starting or stopping\n"
            "13.000 s: control 14, not delivered\n"
            "20.000 s: control 4, error 1062, the service does not run\n"
            "20.000 s: control 5, error 1062, the service does not run\n");
  EXPECT_EQ(Reports(told.report), "2/1/1000/0 4/0/0/129 3/2/0/129 1/0/0/129 ");
  EXPECT_EQ(Refusals(TellShipped("sessions_and_battery").report), "");
}

// Name and size of the files in the log folder when the story has ended.
std::map<std::string, uintmax_t> LogFilesAfter(const std::string& name) {
  const TemporaryFolder disk;
  const Scenario scenario = Shipped(name);
  story::Play(scenario, {.disk = disk.Path(), .seed = {}});
  std::map<std::string, uintmax_t> files;
  for (const auto& file :
       std::filesystem::directory_iterator(story::LogFolder(scenario, disk.Path()))) {
    files[file.path().filename().string()] = file.file_size();
  }
  return files;
}

TEST(StoryHost, DeletesOldLogFiles) {
  const auto files = LogFilesAfter("old_logs");
  // The one in use, six of the young ones, and the log itself.
  EXPECT_EQ(files.size(), 8U);
  EXPECT_TRUE(files.contains("nuvelta_maservice_monitor_HX2208GW_2026-08-28_00.58.46.log"));
  EXPECT_TRUE(files.contains("nuvelta_maservice_monitor_HX2208GW_2026-11-05_19.58.46.log"));
}

TEST(StoryHost, LeavesAnEmptyFileWithTheLogSwitchedOff) {
  const std::map<std::string, uintmax_t> empty{
      {"nuvelta_maservice_monitor_HX2208GW_2026-11-16_00.58.46.log", 0}};
  EXPECT_EQ(LogFilesAfter("logging_off"), empty);
}

// With these seeds the main thread is about to begin the worker.
TEST(StoryHost, EndsAProcessThatIsKilledAtItsStart) {
  const Scenario scenario =
      Inline("{'events': [{'at': 0, 'do': 'start'}, {'at': 0.031, 'do': 'kill'}]}");
  for (uint64_t seed = 31000; seed < 31020; ++seed) {
    EXPECT_EQ(Tell(scenario, seed).report.deadlock, "") << seed;
  }
}

// A service that fails for ever restarts itself for ever; the story ends all the same.
TEST(StoryHost, EndsAStoryInTheMiddleOfARestart) {
  Scenario scenario = Inline(R"({'faults': [{'call': 'DataWriter::WriteBytes', 'bad_alloc': true,
      'count': 'always'}]})");
  for (int ms = 8000; ms < 9500; ms += 25) {
    scenario.rest_within = std::chrono::milliseconds(ms);
    const StoryReport report = Tell(scenario).report;
    EXPECT_LE(report.processes.size(), 2U) << ms;
  }
}

}  // namespace
}  // namespace nuvelta::test
