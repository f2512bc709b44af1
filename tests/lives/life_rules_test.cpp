// Rules that nothing ever breaks prove nothing: each kind of them is broken here.
#include <gtest/gtest.h>

#include <array>
#include <fstream>

#include "lives/command_watch.h"
#include "lives/judging.h"
#include "lives/life.h"
#include "lives/lock_watch.h"
#include "lives/log_truth.h"
#include "lives/permission.h"
#include "lives/status_rules.h"
#include "lives/task_watch.h"
#include "lives/wake_watch.h"
#include "story_support.h"

namespace nuvelta::test {
namespace {

using namespace std::chrono_literals;
using explore::CheckLog;
using explore::Findings;
using explore::TaskState;

std::string Joined(const std::vector<std::string>& findings) {
  std::string text;
  for (const std::string& finding : findings) text += finding + '\n';
  return text;
}

// The log with its first record that contains `mark` edited.
std::string Edited(const std::string& log, const std::string& mark,
                   const std::function<std::string(const std::string& record)>& edit) {
  const size_t at = log.find(mark);
  EXPECT_NE(at, std::string::npos) << mark;
  const size_t begin = log.rfind('\n', at) + 1;
  const size_t end = log.find('\n', at) + 1;
  return log.substr(0, begin) + edit(log.substr(begin, end - begin)) + log.substr(end);
}
std::string Dropped(const std::string& /*record*/) { return ""; }
std::string Doubled(const std::string& record) { return record + record; }

TEST(LifeRules, SeeEveryBreachInALog) {
  const std::string healthy = Tell(Shipped("healthy_arrival")).log;
  // Retries until the modem answers, and a top-up in between.
  const std::string retried = Tell(Inline(R"({'notebook': {'modem': {'query': [
      {'answer': 'error', 'times': 2}]}}, 'events': [{'at': 0, 'do': 'start'},
      {'at': 1, 'do': 'arrival'}]})"))
                                  .log;
  for (const std::string& log : {healthy, retried}) EXPECT_EQ(Joined(CheckLog(log, false)), "");

  struct Breach {
    const std::string& log;
    const char* mark;
    std::function<std::string(const std::string&)> edit;
    const char* finding;
  };
  const auto replaced = [](const char* from, const char* to) {
    return [=](std::string record) {
      return record.replace(record.find(from), std::string_view(from).size(), to);
    };
  };
  const std::array breaches{
      Breach{healthy, "h : - CTaskManager::addTask", Dropped, "an exit line without its entry"},
      Breach{healthy, "h : - ServiceMain", Dropped, "no exit line: ServiceMain"},
      Breach{healthy, "h : + CTaskManager::init", Doubled, "entered inside of itself"},
      Breach{healthy, "h : + CMbnWinRtHelper::Init", Doubled, "entered for the second time"},
      Breach{healthy, "h : - CTaskAuthModule::doJob", Doubled, "an exit line without its entry"},
      Breach{healthy, "h : + CTaskAuthModule::doJob", Doubled, "a run begins while another is on"},
      Breach{healthy, "Current CFUN = 4", replaced("= 4", "= 1"), "the radio is set on after"},
      Breach{healthy, "cfun mode = 4", Dropped, "the radio is set on after"},
      Breach{healthy, "isFccMode pass", Dropped, "the radio is set on after \"PBVoyLtvwAGD"},
      Breach{healthy, "SET MBIM FUN SUCCESS!", Dropped, "no run goes \"PBVoyLtvwAFGD"},
      Breach{healthy, "Current CFUN = 4", replaced("= 4", "= 5"), "another value than the answer"},
      Breach{healthy, "there are not exist iPriority = 0", Doubled, "the level is there already"},
      Breach{retried, ",retry times(", replaced("times(", "times(9"), "granted and spent make"},
      Breach{retried, "get cfun fail,retry", Dropped, "a retry that no run asked for"},
      Breach{retried, "do not add the new task(", Dropped, "granted and spent make"},
      Breach{retried, "Deal Task CTaskAuthModule Cast Time", Dropped, "a run begins while another"},
      Breach{healthy, "find the same task,will delete the task", Doubled, "removed before its end"},
  };
  for (const Breach& breach : breaches) {
    const std::string findings =
        Joined(CheckLog(Edited(breach.log, breach.mark, breach.edit), false));
    EXPECT_NE(findings.find(breach.finding), std::string::npos) << breach.mark << "\n" << findings;
  }
}

// Whatever support reads in the logs of the shipped stories, the notebook knows it so.
TEST(LifeRules, HoldForWhatSupportReadsOfShippedStories) {
  for (const std::string& name : ShippedScenarios()) {
    const explore::LifeReport report = explore::PlayLife(Shipped(name), false);
    EXPECT_EQ(Joined(report.broken), "") << name;
    EXPECT_EQ(report.counts.silent_processes, name == "logging_off" ? 1U : 0U) << name;
    EXPECT_EQ(report.counts.compared_processes + report.counts.silent_processes,
              report.counts.processes)
        << name;
  }
}

TEST(LifeRules, SeeWhatSupportReadsOtherwise) {
  // Refused twice, and the radio is on then.
  const Scenario scenario = Shipped("query_status_code");
  const Told told = Tell(scenario);
  const TemporaryFolder folder;
  const auto file = folder.Path() / "a.log";
  std::ofstream(file, std::ios::binary) << told.log;
  const uint32_t process = told.report.processes.front().process;
  const explore::ProcessTruth truth{.process = process,
                                    .has_log = true,
                                    .causes = {"query_refused", "switched_on"},
                                    .retries = 1,
                                    .queries = {.came_back = 2},
                                    .sets = {.came_back = 1},
                                    .radio = 1};
  explore::Counts counts;
  const auto broken = [&](const std::function<void(explore::ProcessTruth&)>& change) {
    explore::ProcessTruth changed = truth;
    change(changed);
    Findings findings;
    CompareWithLogs(scenario, told.report, {changed}, {file}, findings, counts);
    std::string text = Joined(findings.Texts());
    const std::string mark = "explain: process " + std::to_string(process) + ": ";
    if (text.starts_with(mark)) text = text.substr(mark.size());
    return text;
  };
  EXPECT_EQ(broken([](auto&) {}), "");
  EXPECT_EQ(broken([](auto& t) { t.causes[0] = "query_not_answered"; }),
            "run 1 is query_refused, but the notebook knows query_not_answered\n");
  EXPECT_EQ(broken([](auto& t) { t.retries = 2; }),
            "the count of retries is 1, but the notebook knows 2\n");
  EXPECT_EQ(broken([](auto& t) { t.give_ups = 1; }),
            "the count of give-ups is 0, but the notebook knows 1\n");
  EXPECT_EQ(broken([](auto& t) { t.radio = 4; }), "the radio is 1, but the notebook knows 4\n");
  EXPECT_EQ(broken([](auto& t) { t.unfinished_run = true; }),
            "a run without an end is none, but the notebook knows one\n");
  EXPECT_EQ(broken([](auto& t) { t.sets.came_back = 2; }),
            "watch: the count of set commands is 2, but the notebook knows 1\n"
            "explain: process " +
                std::to_string(process) +
                ": the count of set commands is 1, but the notebook knows 2\n");
  EXPECT_EQ(broken([](auto& t) { t.has_log = false; }),
            "explain: the count of processes is 1, but the notebook knows 0\n");
  // Nothing to be held against.
  EXPECT_EQ(broken([](auto& t) {
              t.lost_lines = true;
              t.causes.clear();
            }),
            "");
  EXPECT_EQ(counts.lost_logs, 1U);
}

TEST(LifeRules, SeeCommandsThatMustNotBe) {
  constexpr std::array<uint8_t, 1> kQuery{0};
  constexpr std::array<uint8_t, 4> kSet{1, 0, 0, 0};
  bool allowed = true;
  const auto played = [&](const std::function<void(explore::CommandWatch&)>& play) {
    Findings findings;
    explore::CommandWatch watch(findings, [&](auto, auto) { return allowed; });
    play(watch);
    return Joined(findings.Texts());
  };
  const auto run = [&](int32_t answer) {
    return played([&](explore::CommandWatch& watch) {
      watch.OnRun(true, 1s);
      watch.OnQuery(kQuery);
      watch.OnAnswer(answer);
      watch.OnSet(kSet, 2s);
    });
  };
  EXPECT_EQ(run(4), "");
  for (const int32_t answer : {1, -1, -2}) {
    EXPECT_EQ(run(answer), "the radio is set after the answer " + std::to_string(answer) + "\n");
  }
  allowed = false;
  EXPECT_EQ(run(4), "the radio is set where the rules forbid it\n");
  allowed = true;
  // An answer of the run before does not count.
  EXPECT_EQ(played([&](explore::CommandWatch& watch) {
              watch.OnRun(true, 1s);
              watch.OnQuery(kQuery);
              watch.OnAnswer(4);
              watch.OnRun(false, 2s);
              watch.OnRun(true, 3s);
              watch.OnSet(kSet, 4s);
            }),
            "the radio is set without an answer to a query\n");
}

TEST(LifeRules, SeeBudgetsThatDoNotAddUp) {
  constexpr uint32_t kWorker = 7;
  constexpr uint32_t kOther = 8;
  const auto played = [&](const std::function<void(explore::TaskWatch&)>& play) {
    Findings findings;
    explore::TaskWatch watch(findings);
    watch.OnWorker(kWorker);
    watch.OnAdded();
    watch.OnStep(kOther, std::array{TaskState{.retry_times = 30}});
    play(watch);
    return Joined(findings.Texts());
  };
  EXPECT_EQ(played([&](auto& watch) {
              watch.OnAdded();
              watch.OnStep(kOther, std::array{TaskState{.retry_times = 32}});
              watch.OnPause(kWorker, 2000);
              watch.OnStep(kWorker, std::array{TaskState{.retry_times = 31}});
              watch.OnPause(kWorker, 500);
              watch.OnPauseEnds(kWorker);
              watch.OnStep(kWorker, {});
            }),
            "");
  EXPECT_EQ(played([&](auto& watch) {
              watch.OnPause(kWorker, 2000);
              watch.OnStep(kWorker, std::array{TaskState{.retry_times = 28}});
            }),
            "the retry budget is 28, but granted and spent make 29\n");
  EXPECT_EQ(played([&](auto& watch) {
              watch.OnStep(kOther, std::array{TaskState{30}, TaskState{30}});
            }),
            "2 tasks are queued at once\n");
  EXPECT_EQ(played([&](auto& watch) { watch.OnStep(kWorker, {}); }),
            "a task is removed that has neither finished nor spent its budget\n");
}

TEST(LifeRules, SeeLocksOutOfOrder) {
  Findings findings;
  explore::LockWatch watch(findings);
  watch.OnMade(1);
  watch.OnEnter(5, 1);
  watch.OnMade(2);
  watch.OnEnter(7, 1);
  watch.OnLeave(5, 1);
  watch.OnLeave(7, 1);
  watch.OnEnter(5, 2);
  watch.OnLeave(5, 2);
  EXPECT_EQ(Joined(findings.Texts()), "");
  watch.OnEnter(5, 2);
  watch.OnEnter(5, 2);
  watch.OnWait(5);
  watch.OnEnter(6, 1);
  watch.OnStep(false);
  EXPECT_EQ(Joined(findings.Texts()),
            "a lock is taken while another is held\na wait under a lock\n"
            "the creation lock is taken though the manager stands\n"
            "a turn ends while the logger's mutex is held\n");
}

TEST(LifeRules, SeeATriggerThatIsLost) {
  constexpr platform::EventHandle kEvent{3};
  Findings findings;
  explore::WakeWatch watch(findings);
  watch.OnWait(kEvent);
  watch.OnStep(true, true);
  watch.OnSet(kEvent);
  watch.OnStep(true, false);
  watch.OnWaited(kEvent);
  watch.OnStep(true, false);
  EXPECT_EQ(Joined(findings.Texts()), "");
  watch.OnWait(kEvent);
  watch.OnStep(true, false);
  EXPECT_EQ(Joined(findings.Texts()), "a task is queued and the worker sleeps\n");
}

TEST(LifeRules, SeeStatusReportsOutOfTurn) {
  // A control that the manager refuses permits nothing; the last one comes regardless.
  Scenario scenario = Shipped("controls_refused");
  scenario.events.pop_back();
  StoryReport report = Tell(scenario).report;
  const auto broken = [&](const std::function<void(StoryReport&)>& change) {
    StoryReport changed = report;
    change(changed);
    Findings findings;
    CheckStatusReports(scenario, changed, findings);
    return findings.Texts().empty() ? std::string() : findings.Texts().front();
  };
  ASSERT_EQ(report.status_reports.size(), 4U);
  EXPECT_EQ(broken([](StoryReport&) {}), "");
  EXPECT_EQ(broken([](StoryReport& r) { std::swap(r.status_reports[0], r.status_reports[1]); }),
            "status: a late running in 4");
  EXPECT_EQ(broken([](StoryReport& r) { r.status_reports.pop_back(); }),
            "status: a process that returns has not reported stopped in 2 4 3");
  EXPECT_EQ(broken([](StoryReport& r) { r.status_reports[2].status.dwCheckPoint = 1; }),
            "status: a check point out of turn in 2 4");
  EXPECT_EQ(broken([](StoryReport& r) { r.status_reports[1].status.dwControlsAccepted = 1; }),
            "status: other controls in 2");
  EXPECT_EQ(broken([](StoryReport& r) { std::swap(r.status_reports[0], r.status_reports[2]); }),
            "status: a check point out of turn in");
  EXPECT_EQ(broken([](StoryReport& r) { r.status_reports[2].status.dwCurrentState = 6; }),
            "status: an unknown state in 2 4 6");
}

TEST(LifeRules, KnowWhereTheRadioIsAllowed) {
  const auto allowed = [](const char* notebook) {
    return explore::Permission(Inline(std::string("{'notebook': ") + notebook + "}"))
        .AllowedAtEnd();
  };
  EXPECT_TRUE(allowed("{}"));
  EXPECT_FALSE(allowed("{'firmware': {'fcc': 'absent'}}"));
  EXPECT_FALSE(allowed("{'modem': {'hardware_id': 'USB\\\\VID_3A5E&PID_9999&REV_0318&MI_00'}}"));
  EXPECT_TRUE(
      allowed("{'firmware': {'fcc': 'absent'}, 'registry': "
              "{'SOFTWARE\\\\Nuvelta Wireless Inc\\\\MAService': {'IsDisableVerify': 1}}}"));
  // A switch that is edited while the story runs counts from then on.
  const explore::Permission edited(Inline(R"({'notebook': {'firmware': {'fcc': 'absent'}},
      'events': [{'at': 0, 'do': 'start'}, {'at': 5, 'do': 'registry_set', 'name':
      'SupportVerifyPlatform', 'key': 'SOFTWARE\\Nuvelta Wireless Inc\\MAService', 'value': 0}]})"));
  EXPECT_FALSE(edited.AllowedBetween(0s, 4s));
  EXPECT_TRUE(edited.AllowedBetween(4s, 5s));
}

}  // namespace
}  // namespace nuvelta::test
