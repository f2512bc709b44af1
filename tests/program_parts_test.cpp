// The parts of the program that plays scenarios: log files, printer, summary.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <nlohmann/json.hpp>
#include <thread>

#include "notebook/program/log_counts.h"
#include "notebook/program/log_follower.h"
#include "notebook/program/log_printer.h"
#include "notebook/program/progress.h"
#include "notebook/program/story_folders.h"
#include "notebook/program/summary.h"
#include "notebook/story/log_files.h"
#include "notebook/story/temporary_folder.h"
#include "story_support.h"

namespace nuvelta::test {
namespace {

namespace fs = std::filesystem;
using namespace story;
using namespace std::chrono_literals;

const std::string kBase = "nuvelta_maservice_monitor_HX2208GW_";
const std::string kBegin = "2026-11-16_00.58.46";

TEST(LogFiles, StandInTheOrderOfTheirLines) {
  const TemporaryFolder folder;
  const std::string later = "2026-11-16_00.58.47";
  for (const std::string& name :
       {kBase + later + ".log", kBase + later + ".1.log", kBase + kBegin + ".log",
        kBase + kBegin + ".2.log", kBase + kBegin + ".10.log", kBase + "2026-11-16_00.58.45.log",
        kBase + kBegin + ".x.log", kBase + kBegin + "1.log", kBase + kBegin + ".1.log.old",
        "other_" + kBegin + ".log", kBase + "2026-11-16.log"}) {
    std::ofstream(folder.Path() / name) << name;
  }
  std::string names;
  for (const fs::path& file : LogFilesSince(folder.Path(), kBegin)) {
    EXPECT_EQ(ReadFile(file), file.filename().string());
    names += file.filename().string().substr(kBase.size()) + "\n";
  }
  EXPECT_EQ(names, kBegin + ".10.log\n" + kBegin + ".2.log\n" + kBegin + ".log\n" + later +
                       ".1.log\n" + later + ".log\n");
  EXPECT_TRUE(LogFilesSince(folder.Path() / "none", kBegin).empty());
  EXPECT_EQ(ReadFile(folder.Path() / "none"), "");
}

TEST(LogFollower, HandsOverEveryLineOnceAndInOrderAcrossRotation) {
  constexpr int kLines = 2000;
  constexpr int kLinesInFile = 40;
  const TemporaryFolder folder;
  const auto file = [&](int rotation) {
    const std::string number = rotation == 0 ? "" : "." + std::to_string(rotation);
    return folder.Path() / (kBase + kBegin + number + ".log");
  };
  std::ofstream(folder.Path() / (kBase + "2026-11-16_00.58.45.log")) << "of an earlier run\n";
  std::string written;
  std::string followed;
  size_t pieces = 0;
  {
    const LogFollower follower(folder.Path(), kBegin, [&](const std::string& text) {
      followed += text;
      ++pieces;
    });
    std::thread([&] {
      std::ofstream log(file(0));
      int rotations = 0;
      for (int i = 0; i < kLines; ++i) {
        if (i > 0 && i % kLinesInFile == 0) {
          log.close();
          for (int rotation = rotations++; rotation >= 0; --rotation) {
            fs::rename(file(rotation), file(rotation + 1));
          }
          log.open(file(0));
        }
        const std::string line = "line " + std::to_string(i) + "\r\n";
        log << line << std::flush;
        written += line;
        if (i % 10 == 0) std::this_thread::sleep_for(2ms);
      }
    }).join();
    // Not only at its end.
    for (int i = 0; i < 500 && pieces == 0; ++i) std::this_thread::sleep_for(1ms);
  }
  EXPECT_LINES(followed, written);
  EXPECT_GT(pieces, static_cast<size_t>(kLines / kLinesInFile));
}

TEST(LogPrinter, ShowsTheLogsCodePageAsUtf8) {
  EXPECT_EQ(FromLogCodePage("plain ~ text"), "plain ~ text");
  EXPECT_EQ(FromLogCodePage("a \xCF\xB5\xCD\xB3 b"), "a \u7cfb\u7edf b");
  EXPECT_EQ(FromLogCodePage("x\xFFy\xCF"), "x\\xFFy\\xCF");
  EXPECT_EQ(FromLogCodePage("\xCF \xCF\xB5\xA3\xAC"), "\\xCF \u7cfb\uff0c");
  EXPECT_EQ(FromLogCodePage("\t\x1B[2J\r\x7F\n"), "\t\\x1B[2J\\x0D\\x7F\n");
}

TEST(LogPrinter, PrintsWholeLinesWithoutColourIntoAFile) {
  std::FILE* out = std::tmpfile();
  ASSERT_NE(out, nullptr);
  const auto printed = [&] {
    std::string text(4096, '\0');
    std::rewind(out);
    text.resize(std::fread(text.data(), 1, text.size(), out));
    std::fseek(out, 0, SEEK_END);
    return text;
  };
  Output output(out);
  LogPrinter printer(output);
  const std::string head = "2026-11-16 00:58:46.123 0000abcd e : ";
  printer.Print(head + "one\r\nfollow");
  EXPECT_LINES(printed(), head + "one\n");
  printer.Print("ing \xCF");
  EXPECT_LINES(printed(), head + "one\n");
  printer.Print("\xB5\r\n\r\n" + head + "two\r\nrest\r");
  const std::string all = head + "one\nfollowing \u7cfb\n\n" + head + "two\n";
  EXPECT_LINES(printed(), all);
  printer.Print("\n");
  EXPECT_LINES(printed(), all + "rest\n");
  std::fclose(out);
}

TEST(FolderNames, AreDistinctAndLeaveEachFileItsOwnName) {
  EXPECT_EQ(
      FolderNames({"a/x.json", "b/x.json", "-", "x-2.json", "a/x.json", "c/standard_input"}),
      (std::vector<std::string>{"x", "x-3", "standard_input", "x-2", "x-4", "standard_input-2"}));
}

TEST(Progress, SpeaksNoMoreOftenThanItShould) {
  char* text = nullptr;
  size_t size = 0;
  std::FILE* out = open_memstream(&text, &size);
  Progress("often.json", out, 0s).Tell(90500ms);
  Progress("seldom.json", out, 1h).Tell(90500ms);
  std::fclose(out);
  EXPECT_STREQ(text, "often.json: playing for 0 s, 90 s into the story\n");
  std::free(text);
}

Summary CrashedSummary() {
  using Kind = virtual_notebook::Fault::Kind;
  using How = virtual_notebook::ProcessEnd::How;
  Summary summary{
      .file = "a.json",
      .title = "A title",
      .report = {},
      .counts = LogCounts{5, 4, 3, 2},
      .why = {.cause = support::Cause::kSwitchedOn, .decided = {.file = "a.log", .line = 259}},
      .real_time = 25ms,
      .log_folder = "logs"};
  auto& report = summary.report;
  report.commands = {
      {.set = false, .command_id = 1, .payload = {0}, .radio_before = 4, .radio_after = 4},
      {.set = true,
       .command_id = 1,
       .payload = {1, 0, 0, 0xAB},
       .radio_before = 4,
       .radio_after = 1}};
  report.radio_before = 4;
  report.radio_after = 1;
  for (const auto& [process, state] : {std::pair{1U, 2U}, {1U, 4U}, {2U, 2U}, {2U, 99U}}) {
    report.status_reports.push_back({.process = process, .status = {.dwCurrentState = state}});
  }
  report.processes = {{.process = 1, .how = How::kCrashed, .crash = "\"task\": bad"},
                      {.process = 2, .how = How::kKilled, .crash = {}},
                      {.process = 3, .how = How::kReturned, .exit_code = 7, .crash = {}}};
  report.launches = {"net stop", "net start"};
  report.notes = {"a note"};
  report.fired_faults = {{"SetEvent", 2, Kind::kError, 0x1F},
                         {"Modem::DeviceServices", 1, Kind::kBadAlloc, 0}};
  report.faults_not_fired = {{.call = "HeapAlloc"}};
  report.standard_output = "usage \xFF";
  report.virtual_time = 90500ms;
  return summary;
}

TEST(Summary, TellsAPersonWhatHappened) {
  Summary summary = CrashedSummary();
  EXPECT_LINES(SummaryTable(summary),
               "A title\n"
               "  triggers         5\n"
               "  runs             4\n"
               "  retries          3\n"
               "  give-ups         2\n"
               "  restarts         2\n"
               "  modem commands   query 00            radio 4 -> 4\n"
               "                   set   01 00 00 AB   radio 4 -> 1\n"
               "  radio            4 -> 1\n"
               "  why              radio on (switched_on): the service has switched the radio on; "
               "line 259 of a.log\n"
               "  service states   START_PENDING, RUNNING | START_PENDING, ?\n"
               "  process          1 CRASHED, \"task\": bad\n"
               "  process          2 killed\n"
               "  process          3 returned 7\n"
               "  fault fired      SetEvent, call 2: error 0x1F\n"
               "  fault fired      Modem::DeviceServices, call 1: out of memory 0x0\n"
               "  fault NOT fired  HeapAlloc\n"
               "  note             a note\n"
               "  standard output  usage \xFF\n"
               "  virtual time     90.500 s\n"
               "  real time        0.025 s\n"
               "  log files        logs\n");
  EXPECT_EQ(
      SummaryLine(summary),
      "a.json: MISBEHAVED; radio 4 -> 1; switched_on; 4 runs, 3 retries, 2 give-ups; 2 restarts; "
      "90.5 s in 0.025 s");

  // Nothing happened, and no log tells of it.
  summary = {.file = "b.json", .title = "B", .report = {}, .counts = {}, .log_folder = {}};
  EXPECT_LINES(SummaryTable(summary),
               "B\n"
               "  work             not known: the service log is switched off\n"
               "  restarts         0\n"
               "  modem commands   none\n"
               "  radio            0 -> 0\n"
               "  why              radio unknown (no_run): the log shows no run of the service's "
               "task\n"
               "  service states   none reported\n"
               "  virtual time     0.000 s\n"
               "  real time        0.000 s\n");
  EXPECT_EQ(SummaryLine(summary),
            "b.json: ok; radio 0 -> 0; no_run; log switched off; 0 restarts; 0.0 s in 0.000 s");
  summary.report.cut_short = true;
  summary.log_lost = "a.log: full";
  EXPECT_NE(SummaryTable(summary).find("  INTERRUPTED      the story was not played to its end\n"
                                       "  LOG LOST         a.log: full\n"),
            std::string::npos);
  EXPECT_EQ(SummaryLine(summary).find("b.json: INTERRUPTED; LOG LOST; radio"), 0U);
  summary.report.deadlock = "x waits for y";
  EXPECT_NE(SummaryTable(summary).find("  DEADLOCK         x waits for y\n"), std::string::npos);
  EXPECT_NE(SummaryLine(summary).find(": MISBEHAVED;"), std::string::npos);
}

TEST(Summary, TellsAProgramTheSame) {
  Summary summary = CrashedSummary();
  const std::string line = SummaryJson(summary);
  EXPECT_EQ(line.find('\n'), line.size() - 1);
  const auto json = nlohmann::json::parse(line);
  const auto due =
      nlohmann::json::parse(R"({"file": "a.json", "behaved": false, "interrupted": false,
      "log_lost": "", "triggers": 5, "runs": 4, "retries": 3, "give_ups": 2, "restarts": 2,
      "radio_after": 1, "verdict": "on", "cause": "switched_on",
      "faults_not_fired": ["HeapAlloc"], "virtual_seconds": 90.5})");
  for (const auto& [key, value] : due.items()) EXPECT_EQ(json[key], value) << key;
  EXPECT_EQ(json["commands"][1], nlohmann::json::parse(R"({"command": "set", "id": 1,
      "bytes": "01 00 00 AB", "radio_before": 4, "radio_after": 1})"));
  ASSERT_EQ(json["states"].size(), 4U);
  EXPECT_EQ(json["states"][1]["state"], "RUNNING");
  EXPECT_EQ(json["processes"][0]["end"], "CRASHED, \"task\": bad");
  EXPECT_EQ(json["faults_fired"][0], "SetEvent, call 2: error 0x1F");

  summary.counts.reset();
  summary.report.processes.clear();
  summary.title = "broken \xFF";  // must not make the text unreadable
  const auto other = nlohmann::json::parse(SummaryJson(summary));
  EXPECT_EQ(other["behaved"], true);
  EXPECT_EQ(other["title"], "broken \uFFFD");
  for (const char* key : {"triggers", "runs", "retries", "give_ups"})
    EXPECT_TRUE(other[key].is_null());
}

}  // namespace
}  // namespace nuvelta::test
