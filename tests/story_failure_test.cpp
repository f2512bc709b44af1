// Calls of the operating system that fail, as far as the fault sweep does not tell, and
// programs that misbehave.
#include <gtest/gtest.h>

#include <regex>

#include "platform/platform.h"
#include "platform/threads.h"
#include "story_support.h"

namespace nuvelta::test {
namespace {

using virtual_notebook::ProcessEnd;
using virtual_notebook::VirtualMachine;

// The radio is what counts: a service that cannot write its log does its work.
TEST(Failures, OfTheLogFileGoToStandardOutput) {
  Scenario scenario = Shipped("healthy_arrival");
  scenario.notebook.environment["programdata"] = "C:\\" + std::string(300, 'x');
  const StoryReport report = Tell(scenario).report;
  EXPECT_EQ(report.standard_output.find("no service log: "), 0U) << report.standard_output;
  EXPECT_EQ(States(report), "2 4 3 1");
  EXPECT_EQ(report.radio_after, 1);
}

TEST(Failures, OfTheAccountWatcherUnwindNothing) {
  for (const char* call : {"AccountWatcher::EnumerationCompleted", "AccountWatcher::Start"}) {
    const Told told = Tell(Inline(std::string("{'faults': [{'call': '") + call + "'}]}"));
    EXPECT_FALSE(told.report.Behaved()) << call;
    // No scope that the exception left is closed.
    for (const char* scope : {"CMbnWinRtHelper::Init\r\n", "CTaskManager::Get", "ServiceMain"}) {
      EXPECT_EQ(told.Count(std::string("h : - ") + scope), 0U) << call;
    }
  }
}

TEST(Failures, OfAShortAnswerAreThoseOfAQuery) {
  for (size_t size = 0; size <= 5; ++size) {
    Scenario scenario = Inline("{'notebook': {'modem': {'query': [{'data': '0100000009'}]}}}");
    scenario.notebook.modem.query.front().data.resize(size);
    const Told told = Tell(scenario);
    EXPECT_EQ(Commands(told.report), size < 4 ? "00*2 01000000" : "00") << size;
    EXPECT_EQ(told.Count("get cfun fail,retry"), size < 4 ? 1U : 0U) << size;
  }
}

virtual_notebook::Program ProgramThat(std::function<void()> main) {
  return {.main = [main] { return main(), 0U; },
          .mute = [] {},
          .make_afresh = [] {},
          .log_folder = [] { return std::string("C:\\Logs"); },
          .log_prefix = "a",
          .log_suffix = ".log"};
}

// A service whose main thread does `main`.
StoryReport PlayProgram(const std::function<void()>& main) {
  const TemporaryFolder disk;
  return VirtualMachine(Inline("{}"), ProgramThat(main), {.disk = disk.Path()}).Play();
}

void WaitForEachOther() {
  platform::Threads& threads = *platform::Os().threads;
  const auto one = threads.InitializeCriticalSectionAndSpinCount(0);
  const auto other = threads.InitializeCriticalSectionAndSpinCount(0);
  const auto take = [&threads](auto first, auto second) {
    threads.EnterCriticalSection(first);
    threads.Sleep(10);
    threads.EnterCriticalSection(second);
  };
  threads.StartDetachedThread([=] { take(other, one); }, "rival");
  take(one, other);
}

void ExpectDeadlock(const StoryReport& report) {
  EXPECT_FALSE(report.Behaved());
  for (const char* thread : {"main", "rival"}) {
    const std::regex stuck("\"" + std::string(thread) +
                           R"(" waits for critical section \d+, held by thread \d+)");
    EXPECT_TRUE(std::regex_search(report.deadlock, stuck)) << report.deadlock;
  }
}

TEST(Misbehaviour, OfTwoThreadsThatWaitForEachOtherIsADeadlock) {
  const TemporaryFolder disk;
  ExpectDeadlock(VirtualMachine(Inline("{}"), ProgramThat([] {}), {.disk = disk.Path()})
                     .RunProcess(WaitForEachOther));
}

TEST(Misbehaviour, OfTwoThreadsThatWaitForEachOtherIsADeadlockOfTheStory) {
  ExpectDeadlock(PlayProgram(WaitForEachOther));
}

TEST(Misbehaviour, OfAnyThreadThatThrowsIsACrash) {
  const StoryReport report = PlayProgram([] {
    platform::Threads& threads = *platform::Os().threads;
    threads.StartDetachedThread([] { throw std::runtime_error("lost"); }, "thrower");
    threads.WaitForSingleObject(threads.CreateEventW(false, false), platform::kInfinite);
  });
  EXPECT_FALSE(report.Behaved());
  EXPECT_EQ(report.deadlock, "");
  ASSERT_EQ(report.processes.size(), 1U);
  EXPECT_EQ(report.processes[0].crash, "thread \"thrower\": lost");
}

// The arrival waits for the lock under which the set-up of the watcher fails.
TEST(StoryFailure, LetsNobodyHaveWhatACrashLetsGo) {
  const Scenario scenario = Inline(R"({'faults': [{'call': 'AccountWatcher::AccountAdded',
      'bad_alloc': true}], 'delays': [{'call': 'CreateEventW', 'count': 'always', 'late_ms': 40}],
      'events': [{'at': 0, 'do': 'start'}, {'at': 0.1, 'do': 'arrival'}]})");
  for (uint64_t seed = 1; seed <= 20; ++seed) {
    const Told told = Tell(scenario, seed);
    EXPECT_EQ(told.report.processes.at(0).crash, "thread \"service main\": std::bad_alloc");
    EXPECT_EQ(told.Count("+ NService::dealDeviceArrive"), 1U) << seed;
    EXPECT_LINES(told.Matching("+ CMbnWinRtHelper::Init"),
                 Lines({"h : + CMbnWinRtHelper::Init",
                        "h : + CMbnWinRtHelper::InitMobileBroadbandAccountWatcher"}))
        << seed;
  }
}

}  // namespace
}  // namespace nuvelta::test
