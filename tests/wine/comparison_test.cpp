// The comparison of stories finds what it is for: two tellings of one story are
// alike, and one whose service did something else is not.
#include "wine/program/comparison.h"

#include <gtest/gtest.h>

#include "story_support.h"
#include "wine/program/journal_report.h"

namespace nuvelta::test {

namespace {

using wine_notebook::Compare;
using wine_notebook::Likeness;
using wine_notebook::Telling;
using wine_notebook::TellingOf;

std::string Replaced(std::string text, const std::string& what, const std::string& by) {
  const size_t at = text.find(what);
  if (at == std::string::npos) throw std::runtime_error("not in the log: " + what);
  return text.replace(at, what.size(), by);
}

constexpr size_t kMoment = 23;  // "2026-11-16 00:58:46.000"

class ComparisonTest : public testing::Test {
 protected:
  Telling With(const std::string& what, const std::string& by) const {
    return TellingOf(m_told.report, Replaced(m_told.log, what, by));
  }

  const Told m_told = Tell(Shipped("self_restart"));
  const Telling m_telling = TellingOf(m_told.report, m_told.log);
};

TEST_F(ComparisonTest, AnotherMachineAndMomentAreAlike) {
  EXPECT_EQ(Compare(m_telling, With(m_told.log.substr(0, kMoment), "1999-01-02 03:04:05.678")),
            Likeness::kWhole);
  EXPECT_EQ(Compare(m_telling, With("C:\\ProgramData\\Nuvelta", "C:\\users\\Public\\Nuvelta")),
            Likeness::kWhole);
  EXPECT_EQ(Compare(m_telling, With("Cast Time 0.", "Cast Time 7.")), Likeness::kWhole);
  EXPECT_EQ(m_telling.log.size(), 2U) << "the service restarted itself once";
}

TEST_F(ComparisonTest, AnotherDoingDiffers) {
  EXPECT_EQ(Compare(m_telling, With("dwControlsAccepted = 0x81", "dwControlsAccepted = 0x85")),
            Likeness::kDiffers);
  EXPECT_EQ(Compare(m_telling, With("retry deal task", "deal task")), Likeness::kDiffers);
  Told other = m_told;
  other.report.commands.back().payload = {4, 0, 0, 0};
  EXPECT_EQ(Compare(m_telling, TellingOf(other.report, other.log)), Likeness::kDiffers);
  other = m_told;
  other.report.launches.clear();
  EXPECT_EQ(Compare(m_telling, TellingOf(other.report, other.log)), Likeness::kDiffers);
}

// Two threads that swap one record each are alike thread by thread; one thread
// that swaps two of its own records is not.
TEST_F(ComparisonTest, TurnsOfThreadsAreNoDifference) {
  Telling swapped = m_telling;
  wine_notebook::ProcessLog& log = swapped.log.front();
  size_t at = 1;
  while (log[at].role == log[at + 1].role) ++at;
  std::swap(log[at], log[at + 1]);
  EXPECT_EQ(Compare(m_telling, swapped), Likeness::kThreads);
  at = 0;
  while (log[at].role != log[at + 1].role || log[at].text == log[at + 1].text) ++at;
  std::swap(log[at].text, log[at + 1].text);
  EXPECT_EQ(Compare(m_telling, swapped), Likeness::kDiffers);
  EXPECT_NE(wine_notebook::Difference(m_telling, swapped).find("> "), std::string::npos);
}

// A journal that was cut off by a crash still tells who crashed.
TEST(JournalReportTest, TellsCrashesApartFromKills) {
  const Scenario scenario = Shipped("healthy_arrival");
  const auto report = wine_notebook::ReportOf(
      scenario, {{.what = wine::ProcessEnded{.process = 1, .killed = true, .exit_code = 1}},
                 {.what = wine::Note{"crashed: dump x.dmp"}},
                 {.what = wine::ProcessEnded{.process = 2, .exit_code = 1}},
                 {.what = wine::ProcessEnded{.process = 3}}});
  ASSERT_EQ(report.processes.size(), 3U);
  using How = virtual_notebook::ProcessEnd::How;
  EXPECT_EQ(report.processes[0].how, How::kKilled);
  EXPECT_EQ(report.processes[1].how, How::kCrashed);
  EXPECT_EQ(report.processes[2].how, How::kReturned);
  EXPECT_FALSE(report.Behaved());
  EXPECT_TRUE(report.notes.empty());
}

}  // namespace

}  // namespace nuvelta::test
