// The timeline of a log: scopes, page, trace, and what hostile logs make of them.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <random>
#include <regex>

#include "notebook/story/log_files.h"
#include "notebook/story/temporary_folder.h"
#include "support/timeline.h"
#include "support/timeline_model.h"
#include "support/timeline_page.h"

namespace nuvelta::test {
namespace {

using namespace support;
using story::ReadFile;
using story::TemporaryFolder;

constexpr const char* kLogFile = "nuvelta_maservice_monitor_HX2208GW_2026-11-16_00.58.46.log";

// "46.020 1010 h : + ServiceMain", a line each, as a log.
std::string LogOf(std::string_view lines) {
  return std::regex_replace(std::string(lines), std::regex("(\\d\\d\\.\\d{3}) (\\w{4}) (.*)\n"),
                            "2026-11-16 00:58:$1 0000$2 $3\r\n");
}

struct Made {
  int code = 0;
  std::string complaints;
  std::string page;
  std::string trace;
};

Made Make(const std::string& log) {
  const TemporaryFolder folder;
  const std::filesystem::path file = folder.Path() / kLogFile;
  std::ofstream(file, std::ios::binary) << log;
  const std::filesystem::path page = folder.Path() / "page.html";
  const std::filesystem::path trace = folder.Path() / "trace.json";
  Made made;
  made.code = WriteTimeline(
      {.path = file.string(), .page = page.string(), .trace = trace.string()},
      [](std::string_view) {}, [&](std::string_view text) { made.complaints += text; });
  if (exists(page)) made.page = ReadFile(page);
  if (exists(trace)) made.trace = ReadFile(trace);
  return made;
}

std::string Count(const std::string& text, const std::string& part) {
  size_t count = 0;
  for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return std::to_string(count) + " of " + part;
}

// Without what stands between the two texts, which it has once.
std::string Without(std::string text, const std::string& begin, const std::string& end) {
  const size_t from = text.find(begin);
  const size_t to = text.find(end, from);
  return to == std::string::npos ? text : text.erase(from, to + end.size() - from);
}

// What a reader of XML would say: every element is closed in its turn, and outside of
// tags there is no bare "<" or "&".
std::string WhyNotWellFormed(const std::string& page) {
  static const std::regex kMarkup(
      R"(<(/?)([a-z][a-z0-9]*)((?: [A-Za-z-]+="[^"<]*")*)(/?)>|[<>]|&(?!(?:amp|lt|gt|quot|#39);))");
  std::string text = Without(page, "<!DOCTYPE html>", "-->");
  text = Without(Without(text, "<style>", "</style>"), "<script>", "</script>");
  std::vector<std::string> open;
  for (std::sregex_iterator it(text.begin(), text.end(), kMarkup), end; it != end; ++it) {
    const std::smatch& match = *it;
    const std::string name = match[2];
    if (name.empty()) return "a bare " + match.str() + " at " + std::to_string(match.position());
    if (name == "meta" || match[4].length() > 0) continue;
    if (match[1].length() == 0) {
      open.push_back(name);
    } else if (open.empty() || open.back() != name) {
      return "</" + name + "> at " + std::to_string(match.position());
    } else {
      open.pop_back();
    }
  }
  return open.empty() ? std::string() : "not closed: " + open.back();
}

bool HasControlCharacters(const std::string& text) {
  return std::ranges::any_of(text, [](char c) { return c != '\n' && c >= 0 && c < 0x20; });
}

std::string ScopesOf(const std::string& log) {
  const TemporaryFolder folder;
  const std::filesystem::path file = folder.Path() / kLogFile;
  std::ofstream(file, std::ios::binary) << log;
  TimelineModel model;
  TimelineReader reader(model);
  Explain({file.string()}, reader);
  std::string text;
  for (const Scope& scope : model.scopes) {
    text += scope.thread.substr(4) + " " + std::string(scope.depth, '>') + scope.name + " " +
            std::to_string(scope.begin) + "-" + std::to_string(scope.end);
    text += scope.how == ScopeEnd::kExit   ? "\n"
            : scope.how == ScopeEnd::kOpen ? " open\n"
                                           : " missing\n";
  }
  return text;
}

TEST(TimelineScopes, EndWithTheirParentWhereTheirExitIsMissing) {
  EXPECT_EQ(ScopesOf(LogOf("46.000 101c h : + CTaskManager::dealTaskThread\n"
                           "46.000 101c h : + CTaskManager::getTask\n"
                           "46.000 1010 h : + ServiceMain\n"
                           "46.001 101c i :   after  front list size = 1; \n"
                           "46.001 101c h : + CTaskAuthModule::doJob\n"
                           "46.002 101c h : + CMbnWinRtHelper::IsMbimExist\n"
                           "46.003 101c h : - CTaskAuthModule::doJob\n"
                           "46.003 101c h : - CTaskAuthModule::doJob\n"
                           "46.004 101c h : + CTaskManager::getTask\n"
                           "46.004 101c h : - CTaskManager::getTask\n")),
            "101c >CTaskManager::getTask 1-3 missing\n"
            "101c >>CMbnWinRtHelper::IsMbimExist 5-6 missing\n"
            "101c >CTaskAuthModule::doJob 4-6\n"
            "101c >CTaskManager::getTask 8-9\n"
            "1010 ServiceMain 2-9 open\n"
            "101c CTaskManager::dealTaskThread 0-9 open\n");
}

TEST(TimelinePage, ShowsWhatALogSays) {
  const Made made =
      Make(LogOf("46.000 1010 i :   NService::Run entry\n"
                 "46.001 101c h : + CTaskAuthModule::doJob\n"
                 "46.005 101c i :   +SendQueryCommandAsync\n"
                 "46.005 101c i :   -SendQueryCommandAsync\n"
                 "48.005 101c i :   query command complete. cfun mode = 1.\n"
                 "48.005 101c i :   CFUN = 1, cfun 1,will do nothing\n"
                 "48.005 101c h : - CTaskAuthModule::doJob\n") +
           "2026-11-16 00:58:48.005 0000101c i :   \r\n\r\n Deal Task CTaskAuthModule Cast Time "
           "2.0040s\r\n\r\n");
  EXPECT_EQ(made.code, 0) << made.complaints;
  EXPECT_EQ(WhyNotWellFormed(made.page), "");
  for (const std::string& part : std::vector<std::string>{
           "<section class=\"verdict on\">\n<strong>radio on</strong> <code>already_on</code>",
           "<dt>Decided by</dt><dd><code>CFUN = 1, cfun 1,will do nothing</code></dd>",
           "<tr><td class=\"number\">1</td><td class=\"number\">2026-11-16 00:58:46.001</td>"
           "<td class=\"number\">2.004 s</td><td><span class=\"chip on\">radio on "
           "(already_on)</span>"
           "</td><td class=\"number\"><a href=\"#n5\">line 6</a></td>"
           "<td>00, answered after 2000 ms: level 1</td><td></td></tr>",
           // Drawn: what happens, the run, the command, the radio from its answer on, a scope, a
           // line, and the folded wait for the answer.
           "<g class=\"mark service\" data-n=\"0\"><title>the service runs\nline 1, 00:58:46.000",
           "<g class=\"run on\" data-n=\"1\"><title>run 1, 2.004 s: radio on (already_on), "
           "decided in line 6</title>",
           "<g class=\"command\" data-n=\"2\"><title>query 00: level 1 after 2.000 s\nlines 3 to 5",
           "<g class=\"radio lit\" data-n=\"4\"><title>radio level 1, on</title>",
           "<g class=\"scope\" data-n=\"1\"><title>CTaskAuthModule::doJob, 2.004 s\nlines 2 to 7",
           "<title>line 4, 00:58:46.005\ni :   -SendQueryCommandAsync</title>",
           "y=\"166\">2.000 s</text>"}) {
    EXPECT_EQ(Count(made.page, part), "1 of " + part);
  }
}

TEST(TimelinePage, EscapesWhatComesFromTheLog) {
  const Made made =
      Make(LogOf("46.000 1010 i :   </title><script>alert(1)</script> & \"x\" '\x01\xFF\n"
                 "46.000 1010 h : + <svg onload=\"alert(2)\">\n"
                 "46.000 1010 i :   NService::Run entry\n"
                 "46.000 1010 e :   Device Arrival. (<img src='x' onerror=alert(3)>)\n"));
  EXPECT_EQ(made.code, 0) << made.complaints;
  EXPECT_EQ(WhyNotWellFormed(made.page), "");
  EXPECT_FALSE(HasControlCharacters(made.page));
  EXPECT_EQ(Count(made.page, "<script"), "1 of <script");
  EXPECT_EQ(Count(made.page, "<img"), "0 of <img");
  EXPECT_EQ(Count(made.page, "onload=\""), "0 of onload=\"");
  const std::string line =
      "<li id=\"n0\"><i>1</i> 00:58:46.000 00001010 i :   &lt;/title&gt;&lt;script&gt;alert(1)"
      "&lt;/script&gt; &amp; &quot;x&quot; &#39;\\x01\\xFF</li>";
  EXPECT_EQ(Count(made.page, line), "1 of " + line);
  EXPECT_TRUE(nlohmann::json::accept(made.trace));
}

// Anything that a log can be: lines of every kind in any order, cut, with any bytes.
TEST(TimelinePage, IsWholeWhateverTheLogIs) {
  constexpr std::array kParts{
      "h : + CTaskAuthModule::doJob",
      "h : - CTaskAuthModule::doJob",
      "h : + CTaskManager::getTask",
      "h : - CTaskManager::getTask",
      "h : + ServiceMain",
      "i :   CTaskFactory createTask TASK_TYPE_AUTH",
      "i :   +SendQueryCommandAsync",
      "i :   +SendSetCommandAsync",
      "i :   -SendSetCommandAsync",
      "i :   query command complete. cfun mode = 4.",
      "i :   set cfun successful.",
      "e :   async_state = Started",
      "i :   result status code = 5",
      "i :   PBT_APMSUSPEND g_szSuspendTime = x",
      "i :   \r\n\r\n Deal Task CTaskAuthModule Cast Time 1e9s",
      "i :   \r\n==================================   NService start ===",
      "<&>\"'\xC3",
  };
  std::mt19937 dice(1);
  const auto pick = [&](size_t count) { return dice() % count; };
  for (int round = 0; round < 30; ++round) {
    std::string log;
    const size_t threads = round % 10 == 0 ? 200 : 3;
    const size_t lines = round == 0 ? 3000 : 200;
    for (size_t i = 0; i < lines; ++i) {
      std::array<char, 64> front{};
      std::snprintf(front.data(), front.size(), "2026-%02zu-16 00:%02zu:46.%03zu %08zx ",
                    1 + pick(14), pick(3), pick(1000), 0x1000 + pick(threads));
      log += std::string(front.data()) + kParts[pick(kParts.size())];
      if (pick(20) == 0) log += static_cast<char>(pick(256));
      log += "\r\n";
    }
    log.resize(log.size() - pick(60));
    const Made made = Make(log);
    EXPECT_EQ(made.code, 0) << made.complaints;
    ASSERT_EQ(WhyNotWellFormed(made.page), "") << "round " << round;
    ASSERT_FALSE(HasControlCharacters(made.page)) << "round " << round;
    ASSERT_TRUE(nlohmann::json::accept(made.trace)) << "round " << round;
  }
}

TEST(TimelinePage, ShowsTheEndOfAHugeLog) {
  const std::string front = "2026-11-16 00:58:46.000 0000101c ";
  std::string log = front + "i :   NService::Run entry\r\n";
  for (int i = 0; i < 12'000; ++i) {
    log += front + "h : + A" + std::to_string(i) + "\r\n" + front + "i :   +getLastLogTime\r\n";
  }
  const Made made = Make(log);
  EXPECT_EQ(made.code, 0) << made.complaints;
  EXPECT_EQ(Count(made.page, "<li id=\"n"), "10000 of <li id=\"n");
  EXPECT_EQ(Count(made.page, "The page shows the last 10000 of 24001 lines."),
            "1 of The page shows the last 10000 of 24001 lines.");
  EXPECT_EQ(Count(made.page, "<i>14002</i>"), "1 of <i>14002</i>");
  EXPECT_EQ(Count(made.page, "<i>14001</i>"), "0 of <i>14001</i>");
  EXPECT_EQ(Count(made.trace, "\"lines_left_out\":14001"), "1 of \"lines_left_out\":14001");
}

TEST(TimelineTrace, KeepsTheOrderWithinAMillisecond) {
  const Made made =
      Make(LogOf("46.020 1010 h : + ServiceMain\n"
                 "46.020 1010 h : + ReportServiceStatus\n"
                 "46.020 1010 h : - ReportServiceStatus\n"
                 "46.021 1010 i :   NService::Run entry\n"
                 "45.000 1010 h : - ServiceMain\n"));
  const auto trace = nlohmann::json::parse(made.trace);
  std::string events;
  for (const auto& event : trace["traceEvents"]) {
    if (event["ph"] == "M") continue;
    events += event["ph"].get<std::string>() + " " + event["name"].get<std::string>() + " " +
              event["ts"].dump() + " " + event.value("dur", nlohmann::json()).dump() + " " +
              event["tid"].dump() + "\n";
  }
  EXPECT_EQ(events,
            "X ReportServiceStatus 1 1 4112\n"
            "X ServiceMain 0 1001 4112\n"
            "i the service runs 1000 null 4112\n");
}

TEST(Timeline, WritesOverNothingButItsOwn) {
  const TemporaryFolder folder;
  const auto log = folder.Path() / kLogFile;
  const auto page = folder.Path() / "page.html";
  std::ofstream(log) << LogOf("46.000 1010 i :   NService::Run entry\n");
  std::string said;
  const auto write = [&](const std::filesystem::path& to) {
    const Print say = [&](std::string_view text) { said = text; };
    return WriteTimeline({.path = log.string(), .page = to.string(), .trace = {}}, say, say);
  };
  std::ofstream(page) << "<!DOCTYPE html>\n<p>mine</p>";
  EXPECT_EQ(write(page), kBadInput);
  EXPECT_EQ(said, page.string() + ": it is there already, and was not written by this program\n");
  EXPECT_EQ(ReadFile(page), "<!DOCTYPE html>\n<p>mine</p>");
  EXPECT_EQ(write(log), kBadInput);
  remove(page);
  EXPECT_EQ(write(page), 0);
  EXPECT_EQ(write(page), 0) << said;
  EXPECT_EQ(write(folder.Path() / "no" / "page.html"), kNotWritten);
  for (const auto& file : std::filesystem::directory_iterator(folder.Path())) {
    EXPECT_NE(file.path().extension(), ".part");
  }
}

}  // namespace
}  // namespace nuvelta::test
