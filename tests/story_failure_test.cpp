// Calls of the operating system that fail, and programs that misbehave.
#include <gtest/gtest.h>

#include <regex>

#include "platform/platform.h"
#include "platform/threads.h"
#include "story_support.h"

namespace nuvelta::test {
namespace {

using virtual_notebook::ProcessEnd;
using virtual_notebook::VirtualMachine;

struct FailedCall {
  std::string fault;     // members of the fault
  std::string line;      // a record that tells of it, empty for none
  std::string commands;  // that reach the modem
  std::string states;
};

TEST(Failures, AreWrittenDownAndLivedWith) {
  const std::string on = "00 01000000";
  const std::string life = "2 4 3 1";
  const std::vector<FailedCall> calls{
      {"'RegisterServiceCtrlHandlerExW'", "e :   RegisterServiceCtrlHandler returned error", "",
       ""},
      {"'RegisterSuspendResumeNotification'",
       "e :   RegisterSuspendResumeNotification returned error", on, life},
      {"'RegisterPowerSettingNotification'", "", on, life},
      {"'RegisterDeviceNotificationW'", "e :   RegisterDeviceNotification error 0x0000000d", on,
       life},
      {"'CreateEventW'", "e :   CreateEvent returned error", "", "2 1"},
      {"'StartServiceCtrlDispatcherW'",
       "i :   N auth Service: Main: StartServiceCtrlDispatcher returned error : 1063", "", ""},
      {"'LookUpNtQuerySystemInformation'", "e :   Get NtQuerySystemInformation Addr Failed!\n", on,
       life},
      {"'WTSEnumerateSessionsW'", "i :   WTSEnumerateSessions failed. GetLastError: 1722", on,
       life},
      {"'CreateThread', 'error': 1455", "i :   Create task deal thread failed, errcode(0x5af).\r\n",
       "", life},
      {"'GetAdaptersAddresses', 'nth': 2", "i :   not get adapter,return ", on, life},
      {"'SetupDiOpenClassRegKeyExW'", "i :   not get hardware id,return", on, life},
      {"'SetupDiGetClassDevsW'",
       "i :   SetupDiGetClassDevs failed return INVALID_HANDLE_VALUE ,error code 13 \xA3\xAC"
       "exit false",
       "", life},
      {"'SetupDiGetClassDevsW'", "i :   Get Nuvelta Device HardwareID Faild", "", life},
      {"'MobileBroadband::GetDefault'", "e :   exception other", on, life},
      {"'MobileBroadband::GetDefault', 'nth': 2, 'null': true", "e :   MBIM Modem is not exist!",
       on, life},
      {"'MobileBroadband::GetDefault', 'nth': 3, 'null': true", "e :   MBIM Modem is not exist!",
       "00*2 01000000", life},
      {"'Modem::GetDeviceService', 'null': true",
       "e :   GetDeviceService() failed. qbi_uuid ={11223344-5566-7788-99AA-BBCCDDEEFF11}", on,
       life},
      {"'Modem::GetDeviceService', 'nth': 2, 'null': true",
       "i :   GetDeviceService() failed. qbi_uuid ={11223344-5566-7788-99AA-BBCCDDEEFF11}",
       "00*2 01000000", life},
      {"'DeviceService::OpenCommandSession', 'null': true", "e :   OpenCommandSession() failed.",
       on, life},
      {"'DeviceService::OpenCommandSession', 'nth': 2, 'null': true",
       "i :   OpenCommandSession() failed.", "00*2 01000000", life},
      // The modem has obeyed, whatever becomes of the session.
      {"'CommandSession::CloseSession', 'nth': 2", "i :   exception other", on + " 00", life},
      {"'AccountWatcher::Start', 'bad_alloc': true", "i :   exception : std::bad_alloc", on, life},
  };
  for (const FailedCall& call : calls) {
    const Told told = Tell(Inline("{'faults': [{'call': " + call.fault + "}]}"));
    EXPECT_TRUE(told.report.Behaved()) << call.fault;
    EXPECT_EQ(told.report.fired_faults.size(), 1U) << call.fault;
    EXPECT_EQ(Commands(told.report), call.commands) << call.fault;
    EXPECT_EQ(States(told.report), call.states) << call.fault;
    EXPECT_NE(("\n" + told.Matching("")).find("\n" + call.line), std::string::npos) << call.fault;
  }
}

TEST(Failures, OfTheDispatcherAreTheExitCode) {
  const Told told = Tell(Inline("{'faults': [{'call': 'StartServiceCtrlDispatcherW'}]}"));
  ASSERT_EQ(told.report.processes.size(), 1U);
  EXPECT_EQ(told.report.processes[0].how, ProcessEnd::How::kReturned);
  EXPECT_EQ(told.report.processes[0].exit_code, 1063U);
}

TEST(Failures, OfTheSystemInformationCallGoToStandardOutput) {
  const Told told = Tell(Inline("{'faults': [{'call': 'NtQuerySystemInformation'}]}"));
  EXPECT_EQ(told.report.standard_output, "NtQuerySystemInformation Failed!\n");
  EXPECT_EQ(told.Count("boot time"), 0U);
  EXPECT_EQ(told.Count("NtQuery"), 0U);
}

// The radio is what counts: a service that cannot write its log does its work.
TEST(Failures, OfTheLogFileGoToStandardOutput) {
  Scenario scenario = Shipped("healthy_arrival");
  scenario.notebook.environment["programdata"] = "C:\\" + std::string(300, 'x');
  const StoryReport report = Tell(scenario).report;
  EXPECT_EQ(report.standard_output.find("no service log: "), 0U) << report.standard_output;
  EXPECT_EQ(States(report), "2 4 3 1");
  EXPECT_EQ(report.radio_after, 1);
}

TEST(Failures, OfTheServiceManagerLeaveTheServiceNameless) {
  const Told told = Tell(Inline(R"({
    'notebook': {'modem': {'query': [{'hresult': '0x8007001F', 'times': 4}]}},
    'faults': [{'call': 'OpenSCManagerW'}, {'call': 'EnumServicesStatusExW'}]})"));
  EXPECT_LINES(told.Between("OpenSCManager fail", "find taskElement"),
               Lines({"e :   OpenSCManager fail,error code 0x5", "h : - CommonUtil::GetServiceName",
                      "e :   Find service name fail,return false",
                      "h : - CommonUtil::RestartService", "h : + CTaskManager::getTask",
                      "i :   find taskElement.iPriority = 0; list size = 1 "}));
  EXPECT_EQ(told.Count("Find service name fail,return false"), 2U);
  EXPECT_EQ(States(told.report), "2 4 | 2 4 3 1");
}

TEST(Failures, OfTheAccountWatcherEndTheProcess) {
  for (const char* call : {"AccountWatcher::EnumerationCompleted", "AccountWatcher::Start"}) {
    const Told told = Tell(Inline(std::string("{'faults': [{'call': '") + call + "'}]}"));
    EXPECT_FALSE(told.report.Behaved()) << call;
    ASSERT_EQ(told.report.processes.size(), 1U) << call;
    EXPECT_EQ(told.report.processes[0].how, ProcessEnd::How::kCrashed) << call;
    EXPECT_EQ(told.report.processes[0].crash,
              "thread \"service main\": an exception that is no std::exception");
    // Nothing is unwound: no scope that the exception left is closed.
    EXPECT_EQ(told.Count("h : - CMbnWinRtHelper::Init\r\n"), 0U) << call;
    EXPECT_EQ(told.Count("h : - CTaskManager::GetTaskManagerInstance"), 0U) << call;
    EXPECT_EQ(told.Count("h : - ServiceMain"), 0U) << call;
    EXPECT_EQ(States(told.report), "2 4") << call;
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
