// The service's log in whole stories: texts, order, what is left out.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <regex>

#include "source_folder.h"
#include "story_support.h"

namespace nuvelta::test {
namespace {

// Milliseconds of the day.
int Milliseconds(const std::string& time) {
  const auto part = [&](size_t at, size_t size) { return std::stoi(time.substr(at, size)); };
  return ((part(11, 2) * 60 + part(14, 2)) * 60 + part(17, 2)) * 1000 + part(20, 3);
}

TEST(StoryLog, OfTheHealthyArrivalIsExact) {
  std::ifstream file(SourceFolder() / "tests/expected/healthy_arrival.log", std::ios::binary);
  const std::string expected{std::istreambuf_iterator<char>(file), {}};
  std::string log;
  for (const Record& record : TellShipped("healthy_arrival").Records()) {
    EXPECT_EQ(record.time.substr(0, 14), "2026-11-16 00:");
    log += record.thread + " " + record.text + "\r\n";
  }
  // The compiler pads a day below ten with a blank.
  const std::regex build(R"(build at [A-Z][a-z]{2} [ \d]\d \d{4}  \d\d:\d\d:\d\d)");
  EXPECT_LINES(std::regex_replace(log, build, "build at <date>  <time>"), expected)
      << "tests/expected/healthy_arrival.log";
}
// A piece of the log of a story that is told in tests/expected/excerpts.txt.
struct Excerpt {
  std::string heading;
  std::string story;
  std::string from;
  std::string to;  // empty: the lines that contain `from`
  std::string lines;
};

// With the bytes that are written \xNN.
std::string Unescaped(const std::string& line) {
  static const std::regex kByte(R"(\\x([0-9A-F]{2}))");
  std::string text;
  std::sregex_iterator byte(line.begin(), line.end(), kByte);
  size_t at = 0;
  for (; byte != std::sregex_iterator(); ++byte) {
    const auto begin = static_cast<size_t>(byte->position());
    text += line.substr(at, begin - at) + static_cast<char>(std::stoi((*byte)[1], nullptr, 16));
    at = begin + 4;
  }
  return text + line.substr(at);
}

std::vector<Excerpt> Excerpts() {
  static const std::regex kHeading(R"re(== (.*), (?:with|from) "(.*?)"(?: to "(.*)")?)re");
  const std::string name = "tests/expected/excerpts.txt";
  std::ifstream file(SourceFolder() / name);
  std::vector<Excerpt> excerpts;
  size_t number = 1;
  for (std::string line; std::getline(file, line); ++number) {
    std::smatch match;
    if (std::regex_match(line, match, kHeading)) {
      const std::string heading = name + ":" + std::to_string(number) + ": " + line;
      excerpts.push_back({heading, match[1], match[2], match[3], {}});
    } else if (!line.empty() && line.front() != '#') {
      excerpts.at(excerpts.size() - 1).lines += Unescaped(line) + "\n";
    }
  }
  return excerpts;
}

TEST(StoryLog, HoldsItsExcerpts) {
  const std::vector<Excerpt> excerpts = Excerpts();
  EXPECT_GT(excerpts.size(), 30U);
  for (const auto& [heading, story, from, to, lines] : excerpts) {
    const Told told = story.front() == '{' ? Tell(Inline(story)) : TellShipped(story);
    EXPECT_LINES(to.empty() ? told.Matching(from) : told.Between(from, to), lines) << heading;
  }
}

// "30 29 28": the budgets shown in the retry lines, a "!" before that of giving up.
std::string Budgets(const Told& told) {
  std::string budgets;
  for (const Record& record : told.Records()) {
    static const std::regex kLine(
        R"((?:(re)try )?deal task : CTaskAuthModule ,retry times\((-?\d+)\))");
    std::smatch match;
    if (!std::regex_search(record.text, match, kLine)) continue;
    if (!budgets.empty()) budgets += ' ';
    budgets += (match[1].matched ? "" : "!") + match[2].str();
  }
  return budgets;
}

TEST(StoryLog, AccountsForEveryRun) {
  const std::vector<std::pair<std::string, std::string>> stories{
      {"modem_never_comes",
       "30 29 28 27 26 25 24 23 22 21 20 19 18 17 16 15 14 13 12 11 10 9 8 7 6 5 4 3 2 1 !0"},
      {"modem_comes_late", "30 29 28 27"},  // the top-up after the last one
      {"self_restart", "32 33 34 35"},      // two more and one less in each run
      {"resume_during_job", "1 !0"},        // cleared, then topped up by one
      {"resume_without_suspend", "30 29 28 1 1 !0"},
      {"radio_minus_one", ""},
      {"set_refused", "30 29"}};
  for (const auto& [name, budgets] : stories)
    EXPECT_EQ(Budgets(TellShipped(name)), budgets) << name;
}

TEST(StoryLog, ShowsThePausesOfTheWorker) {
  const std::vector<Record> records = TellShipped("healthy_arrival").Records();
  int retries = 0;
  int pops = 0;
  for (size_t i = 1; i < records.size(); ++i) {
    const auto contains = [&](const char* part) {
      return records[i].text.find(part) != std::string::npos;
    };
    const auto since = [&](size_t before) {
      return Milliseconds(records[i].time) - Milliseconds(records[before].time);
    };
    // The line before is the worker's own, or that of a thread between.
    size_t before = i - 1;
    while (before > 0 && records[before].thread != records[i].thread) --before;
    if (contains("- CTaskManager::retry")) retries += since(before) == 2000 ? 1 : 100;
    if (contains("+ CTaskManager::popTask")) pops += since(before) == 500 ? 1 : 100;
  }
  EXPECT_EQ(retries, 2);
  EXPECT_EQ(pops, 1);
}
TEST(StoryLog, ShowsEveryTryOfARestart) {
  EXPECT_EQ(TellShipped("self_restart").report.launches,
            std::vector<std::string>{"cmd.exe /C taskkill /pid 2600 /f & net start \"Nuvelta "
                                     "Wireless AUTH Service HX2208\""});
  EXPECT_GT(TellShipped("self_restart_refused").Count("RestartService failed"), 5U);
}

TEST(StoryLog, ShowsTheFirstMobileAdapterOnly) {
  const Told other = Tell(Inline(
      R"({'notebook': {'adapters': [{'name': '{A}', 'if_type': 'wwan', 'instance_id': 'USB\\A'}]}})"));
  EXPECT_EQ(other.Count("Adapters Info: adapter name = {A}, "), 30U);
  EXPECT_EQ(other.Count("Adapters Info: "), 30U);
  EXPECT_EQ(Commands(other.report), "");
}

}  // namespace
}  // namespace nuvelta::test
