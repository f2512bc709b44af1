// What every shipped story comes to: the modem's commands, its radio, the work
// that was done. The same under every seed, and with all threads at once.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "story_support.h"

namespace nuvelta::test {
namespace {

struct Outcome {
  std::string commands;
  int radio = 0;  // afterwards
  size_t runs = 0;
  size_t retries = 0;
  size_t give_ups = 0;
  size_t restarts = 0;
  std::string states = "2 4 3 1";
};

const std::string kSwitchedOn = "00 01000000";

const std::map<std::string, Outcome>& Outcomes() {
  static const std::map<std::string, Outcome> outcomes{
      {"accounts", {kSwitchedOn + " 00", 1, 2, 0, 0, 0}},
      {"arrival_during_start", {kSwitchedOn, 1, 1, 0, 0, 0}},
      {"arrival_storm", {kSwitchedOn + " 00*8", 1, 9, 0, 0, 0}},
      {"blank_version", {kSwitchedOn, 1, 1, 0, 0, 0}},
      {"controls_refused", {kSwitchedOn, 1, 1, 0, 0, 0}},
      {"cs24_name_in_lower_case", {kSwitchedOn, 1, 1, 0, 0, 0}},
      {"event_log_locked", {kSwitchedOn + " " + kSwitchedOn, 1, 2, 0, 0, 0}},
      {"fcc_in_lower_case", {kSwitchedOn, 1, 1, 0, 0, 0}},
      {"fcc_missing", {"", 4, 1, 0, 0, 0}},
      {"fcc_too_long", {"", 4, 1, 0, 0, 0}},
      {"healthy_arrival", {kSwitchedOn, 1, 3, 2, 0, 0}},
      {"hibernate_resume", {kSwitchedOn + " " + kSwitchedOn, 1, 2, 0, 0, 0}},
      {"killed_and_started", {"00*2 01000000", 1, 1, 0, 0, 0, "2 4 | 2 4 3 1"}},
      {"logging_off", {kSwitchedOn, 1, 0, 0, 0, 0}},  // the runs are not logged
      {"mbim_gone", {kSwitchedOn, 1, 4, 3, 0, 0}},
      {"modem_after_resume", {kSwitchedOn + " " + kSwitchedOn, 1, 12, 10, 0, 0}},
      {"modem_comes_late", {kSwitchedOn, 1, 5, 4, 0, 0}},
      {"modem_never_comes", {"", 4, 30, 30, 1, 0}},
      {"newer_platform", {kSwitchedOn, 1, 1, 0, 0, 0}},
      {"no_logon_recorded", {kSwitchedOn + " " + kSwitchedOn, 1, 2, 0, 0, 0}},
      {"old_logs", {kSwitchedOn, 1, 1, 0, 0, 0}},
      {"pause_and_shutdown", {kSwitchedOn, 1, 1, 0, 0, 0, "2 4 6 5 3 1"}},
      {"pci_device_beside_usb_modem", {"", 4, 1, 0, 0, 0}},
      {"pci_modem", {"", 4, 30, 30, 1, 0}},
      {"query_late", {kSwitchedOn, 1, 1, 0, 0, 0}},
      {"query_never_answered", {"00*30", 4, 30, 30, 1, 0}},
      {"query_short_data", {"00*3 01000000", 1, 3, 2, 0, 0}},
      {"query_status_code", {"00*2 01000000", 1, 2, 1, 0, 0}},
      {"query_too_late", {"00*2 01000000", 1, 2, 1, 0, 0}},
      {"quick_boot_resume", {kSwitchedOn + " " + kSwitchedOn, 1, 2, 0, 0, 0}},
      {"radio_already_on", {"00", 1, 1, 0, 0, 0}},
      {"radio_minus_one", {"00", -1, 1, 0, 0, 0}},
      {"radio_not_ready", {"00*4 01000000", 1, 4, 3, 0, 0}},
      {"registry_values_of_every_type", {kSwitchedOn, 1, 10, 0, 0, 0}},
      {"resume_during_job", {"00*2 01000000", 1, 2, 1, 1, 0}},
      {"resume_without_suspend", {"", 4, 5, 5, 1, 0}},
      {"self_restart", {"00*5 01000000", 1, 5, 4, 0, 1, "2 4 | 2 4 3 1"}},
      {"self_restart_refused", {"00*4", 4, 4, 4, 0, 0}},
      {"sessions_and_battery", {"00", 1, 1, 0, 0, 0}},
      {"set_refused", {kSwitchedOn + " " + kSwitchedOn + " 00", 1, 3, 2, 0, 0}},
      {"sleep_resume", {kSwitchedOn + " " + kSwitchedOn, 1, 2, 0, 0, 0}},
      {"stop_while_busy", {"00", 4, 0, 0, 0, 0}},
      {"unlisted_platform", {kSwitchedOn, 1, 1, 0, 0, 0}},
      {"vendor_service_missing", {"", 4, 30, 30, 1, 0}},
      {"verification_off_by_256", {kSwitchedOn, 1, 1, 0, 0, 0}},
      {"verification_off_by_disable_value", {kSwitchedOn, 1, 1, 0, 0, 0}},
      {"verification_off_by_support_value", {kSwitchedOn, 1, 1, 0, 0, 0}},
      {"worker_thread_fails", {"", 4, 0, 0, 0, 0}},
      {"wrong_modem", {"", 4, 1, 0, 0, 0}},
  };
  return outcomes;
}

// The row that the table would have.
std::string Row(const std::string& name) {
  const Told told = Tell(Shipped(name));
  std::string row = "{\"" + name + "\", {\"" + Commands(told.report) + "\", " +
                    std::to_string(told.report.radio_after);
  for (const size_t count : {told.Count(" Cast Time "), told.Count(" retry deal task : "),
                             told.Count(" <=0 ,give up the Task "), told.report.launches.size()}) {
    row += ", " + std::to_string(count);
  }
  const std::string states = States(told.report);
  return row + (states == Outcome{}.states ? "" : ", \"" + states + "\"") + "}},";
}

TEST(Outcomes, AreKnownOfEveryShippedScenario) {
  constexpr const char* kTable = "the table in tests/story_outcome_test.cpp";
  const std::vector<std::string> files = ShippedScenarios();
  for (const std::string& name : files) {
    if (Outcomes().contains(name)) continue;
    ADD_FAILURE() << "scenarios/" << name << ".json has no row in " << kTable
                  << ". This is what it comes to now, to be checked and added:\n    " << Row(name);
  }
  for (const auto& [name, outcome] : Outcomes()) {
    if (std::ranges::binary_search(files, name)) continue;
    ADD_FAILURE() << kTable << " has a row for " << name << ", but there is no scenarios/" << name
                  << ".json";
  }
}

std::vector<std::string> Names() {
  std::vector<std::string> names;
  for (const auto& [name, outcome] : Outcomes()) names.push_back(name);
  return names;
}

std::string NameOf(const testing::TestParamInfo<std::string>& story) { return story.param; }

class Shipping : public testing::TestWithParam<std::string> {};

TEST_P(Shipping, ComesToItsOutcome) {
  const Outcome& expected = Outcomes().at(GetParam());
  const Told told = Tell(Shipped(GetParam()));
  EXPECT_TRUE(told.report.Behaved()) << told.report.deadlock;
  EXPECT_EQ(Commands(told.report), expected.commands);
  EXPECT_EQ(told.report.radio_after, expected.radio);
  EXPECT_EQ(told.Count(" Cast Time "), expected.runs);
  EXPECT_EQ(told.Count(" retry deal task : "), expected.retries);
  EXPECT_EQ(told.Count(" <=0 ,give up the Task "), expected.give_ups);
  EXPECT_EQ(told.report.launches.size(), expected.restarts);
  EXPECT_EQ(States(told.report), expected.states);
  EXPECT_EQ(told.report.notes, std::vector<std::string>{});
  EXPECT_EQ(told.report.faults_not_fired.size(), 0U);
  EXPECT_EQ(told.report.leaked_handles, 0U);
}

TEST_P(Shipping, IsTheSameUnderTheSameSeedAndComesToTheSameUnderAnother) {
  const Scenario scenario = Shipped(GetParam());
  EXPECT_LINES(Tell(scenario, 7).log, Tell(scenario, 7).log);
  const Outcome& expected = Outcomes().at(GetParam());
  for (uint64_t seed = 100; seed < 104; ++seed) {
    const StoryReport report = Tell(scenario, seed).report;
    EXPECT_TRUE(report.Behaved()) << "seed " << seed << ": " << report.deadlock;
    EXPECT_EQ(Commands(report), expected.commands) << "seed " << seed;
    EXPECT_EQ(report.radio_after, expected.radio) << "seed " << seed;
    EXPECT_EQ(States(report), expected.states) << "seed " << seed;
  }
}

INSTANTIATE_TEST_SUITE_P(, Shipping, testing::ValuesIn(Names()), NameOf);

class FreeRunning : public testing::TestWithParam<std::string> {};

TEST_P(FreeRunning, ComesToItsOutcome) {
  const Outcome& expected = Outcomes().at(GetParam());
  const StoryReport report = TellFreely(Shipped(GetParam()));
  EXPECT_TRUE(report.Behaved()) << report.deadlock;
  EXPECT_EQ(Commands(report), expected.commands);
  EXPECT_EQ(report.radio_after, expected.radio);
}

INSTANTIATE_TEST_SUITE_P(, FreeRunning, testing::ValuesIn(Names()), NameOf);

}  // namespace
}  // namespace nuvelta::test
