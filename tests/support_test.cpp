// What the support program makes of logs: whole ones, cut ones, foreign ones.
#include <gtest/gtest.h>

#include <fstream>
#include <regex>

#include "notebook/story/log_files.h"
#include "source_folder.h"
#include "story_support.h"
#include "support/causes.h"
#include "support/explain.h"

namespace nuvelta::test {
namespace {

namespace fs = std::filesystem;

constexpr const char* kLogName = "nuvelta_maservice_monitor_HX2208GW_2026-11-16_00.58.46";

struct Explained {
  std::string text;
  std::string problems;
  int exit_code = 0;
};

// The paths in it, and the date of the build, which differ, as FOLDER and DATE.
Explained ExplainPaths(const fs::path& folder, const std::vector<std::string>& paths) {
  Explained explained;
  const auto explanation = support::MakeTextExplanation(
      [&](std::string_view text) { explained.text += text; },
      [&](std::string_view text) { explained.problems += text; }, false);
  explained.exit_code = support::Explain(paths, *explanation);
  for (std::string* text : {&explained.text, &explained.problems}) {
    for (size_t at; (at = text->find(folder.string())) != std::string::npos;) {
      text->replace(at, folder.string().size(), "FOLDER");
    }
    *text = std::regex_replace(*text, std::regex(", built [^\n]*"), ", built DATE");
  }
  return explained;
}

void Write(const fs::path& file, std::string_view text) {
  fs::create_directories(file.parent_path());
  std::ofstream(file, std::ios::binary) << text;
}

Explained ExplainText(std::string_view log) {
  const TemporaryFolder folder;
  Write(folder.Path() / (std::string(kLogName) + ".log"), log);
  return ExplainPaths(folder.Path(), {folder.Path().string()});
}

// The first `count` lines of a log.
std::string Head(const std::string& log, int count) {
  size_t at = 0;
  while (count-- > 0) at = log.find('\n', at) + 1;
  return log.substr(0, at);
}

TEST(Explain, TellsManyRunsInFewLines) {
  EXPECT_LINES(ExplainText(TellShipped("query_status_code").log).text,
               story::ReadFile(SourceFolder() / "tests/expected/explain_query_status_code.txt"));
}

// Parts are read oldest first, a process may begin in the middle of one, and each folder
// is a notebook.
TEST(Explain, ReadsPartsProcessesAndNotebooks) {
  const TemporaryFolder folder;
  const std::string log = TellShipped("killed_and_started").log;
  const std::string first = Head(log, 60);
  const std::string second = Head(log, 140).substr(first.size());
  const fs::path one = folder.Path() / "a fleet/one";
  Write(one / (std::string(kLogName) + ".2.log"), first);
  Write(one / (std::string(kLogName) + ".1.log"), second);
  Write(one / (std::string(kLogName) + ".log"), log.substr(first.size() + second.size()));
  Write(one / "other.log", "not looked at");
  Write(folder.Path() / "a fleet/two" / (std::string(kLogName) + ".log"), "");
  const Explained explained = ExplainPaths(folder.Path(), {(folder.Path() / "a fleet").string()});
  EXPECT_LINES(explained.text,
               story::ReadFile(SourceFolder() / "tests/expected/explain_fleet.txt"));
  EXPECT_EQ(explained.problems, "");
  EXPECT_EQ(explained.exit_code, support::kRadioUnknown);
}

TEST(Explain, CountsWhatItCannotRead) {
  const std::string log = TellShipped("healthy_arrival").log;
  const std::string head = Head(log, 100);
  // The beginning rotated away, bytes of nobody's, a line of another version, no end.
  std::string damaged = "cut text\r\n" + log.substr(head.size());
  damaged += "2026-11-16 00:59:00.000 0000abcd i :   a new text\r\n\xFF\x80\x01\r\n";
  damaged += "2026-11-16 00:59:01.000 0000abcd h : + Unknown::scope\r\n2026-11-16 00:59:0";
  const std::string text = ExplainText(damaged).text;
  EXPECT_NE(text.find("2 unknown, 1 outside of any record; the beginning is missing; ends in the "
                      "middle of a line\n"),
            std::string::npos)
      << text;
  EXPECT_NE(text.find("radio on (switched_on)"), std::string::npos) << text;
}

TEST(Explain, SaysOfARunThatHasNotEnded) {
  const std::string log = TellShipped("query_never_answered").log;
  const size_t waiting = log.find("-SendQueryCommandAsync");
  const Explained explained = ExplainText(log.substr(0, log.find('\n', waiting) + 1));
  EXPECT_NE(explained.text.find("radio unknown (run_unfinished), line "), std::string::npos)
      << explained.text;
  EXPECT_EQ(explained.exit_code, support::kRadioUnknown);
}

TEST(Explain, RefusesWhatIsNoLog) {
  const auto refused = [](std::string_view text) {
    const Explained explained = ExplainText(text);
    EXPECT_EQ(explained.exit_code, support::kBadInput) << text;
    EXPECT_EQ(explained.text, "FOLDER\n") << text;
    return explained.problems;
  };
  constexpr const char* kExpected =
      "; expected lines such as \"2026-11-16 00:58:46.000 00000abc i :   text\" of this service\n";
  EXPECT_EQ(refused("just text\nand more\n"), std::string("FOLDER: this is no log") + kExpected);
  EXPECT_EQ(refused("2026-11-16 00:59:00.000 0000abcd i :   somebody else's\r\n"),
            std::string("FOLDER: another program's log") + kExpected);
}

TEST(Causes, AreThoseOfTheDocument) {
  const std::string document = story::ReadFile(SourceFolder() / "docs/support.md");
  std::vector<std::string> documented;
  const std::regex row("\n\\| `([a-z_]+)` \\|");
  for (std::sregex_iterator match(document.begin(), document.end(), row), end; match != end;
       ++match) {
    documented.push_back((*match)[1]);
  }
  std::vector<std::string> causes;
  for (const support::CauseInfo& info : support::Causes()) {
    EXPECT_EQ(&support::InfoOf(info.cause), &info);
    causes.emplace_back(info.id);
  }
  EXPECT_EQ(documented, causes);
}

}  // namespace
}  // namespace nuvelta::test
