// The service's log in whole stories: texts, order, what is left out.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <regex>

#include "source_folder.h"
#include "story_support.h"

namespace nuvelta::test {
namespace {

Told TellShipped(const std::string& name) { return Tell(Shipped(name)); }

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

TEST(StoryLog, ShowsTypeAndBudgetUnderEachOthersLabels) {
  EXPECT_LINES(TellShipped("healthy_arrival").Matching("find the same task ID"),
               "i :   find the same task ID, and the retry times(100) != 0 ,so do not add the new "
               "task(28)\n");
  EXPECT_LINES(TellShipped("resume_during_job").Matching("find the same task ID"),
               "i :   find the same task ID, and the retry times(100) == 0 ,so do not add the new "
               "task(0),but add 1 \n");
}

TEST(StoryLog, ClosesTheJobTwiceWithoutMbim) {
  EXPECT_LINES(TellShipped("mbim_gone").Between("- CMbnWinRtHelper::IsMbimExist", "Cast Time"),
               Lines({"h : - CMbnWinRtHelper::IsMbimExist", "i :   MBIM Device is not exist.",
                      "h : - CTaskAuthModule::doJob", "h : - CTaskAuthModule::doJob",
                      "i :   \r\n\r\n Deal Task CTaskAuthModule Cast Time 0.0110s\r\n"}));
}

TEST(StoryLog, LeavesTheQueryOpenWithoutTheVendorService) {
  EXPECT_LINES(TellShipped("vendor_service_missing")
                   .Between("+ CMbnWinRtHelper::GetMbimCfun", "- CTaskAuthModule::doJob"),
               Lines({"h : + CMbnWinRtHelper::GetMbimCfun", "i :   +Get MobileBroadbandModem",
                      "i :   -Get MobileBroadbandModem",
                      "i :   device sevice: {533fbeeb-14fe-4467-9f90-33a223e56c3f}\n",
                      "i :   device sevice: {c08a26dd-7718-4382-8482-6e0d583c4d0e}\n",
                      "i :   module current version not support MA,return",
                      "i :   get cfun fail,retry", "h : - CTaskAuthModule::doJob"}));
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

TEST(StoryLog, TellsOfTheSelfRestart) {
  const Told told = TellShipped("self_restart");
  const std::string from = "CommonUtil::RestartService();";
  EXPECT_LINES(
      told.Between(from, "- CTaskManager::dealTaskThread"),
      Lines({"i :   CommonUtil::RestartService();", "h : + CommonUtil::RestartService",
             "h : + CommonUtil::GetServiceName",
             "i :   Service Name: Nuvelta Wireless AUTH Service HX2208\n",
             "h : - CommonUtil::GetServiceName",
             "i :   buffer /C taskkill /pid 2600 /f & net start \"Nuvelta Wireless AUTH Service "
             "HX2208\"",
             "i :    RestartService success.", "h : - CommonUtil::RestartService",
             "h : + CTaskManager::exit", "h : - CTaskManager::exit", "i :   dealTaskThread exit",
             "h : - CTaskManager::dealTaskThread"}));
  EXPECT_EQ(told.report.launches,
            std::vector<std::string>{"cmd.exe /C taskkill /pid 2600 /f & net start \"Nuvelta "
                                     "Wireless AUTH Service HX2208\""});
  // Killed, not stopped: no exit of the first process is seen.
  EXPECT_EQ(told.Count("NService exit"), 1U);
}

TEST(StoryLog, TakesTheSameTaskAgainWhenTheRestartIsRefused) {
  const Told told = TellShipped("self_restart_refused");
  EXPECT_LINES(
      told.Between("RestartService failed", "CommonUtil::RestartService();"),
      Lines({"i :    RestartService failed.Error = 0x4c7", "h : - CommonUtil::RestartService",
             "h : + CTaskManager::getTask", "i :   find taskElement.iPriority = 0; list size = 1 ",
             "i :   find taskElement.type = CTaskAuthModule; ",
             "i :   after  front list size = 1; ", "h : + CTaskManager::printTaskList",
             "i :   \r\n================= print task list begin ========================\r\n",
             "i :   [1]:iPriority 0(0 TASK_PRIORITY_HIGH ; 1 TASK_PRIORITY_MEDIUM ; 2 "
             "TASK_PRIORITY_LOW) CTaskAuthModule , retry time = 34",
             "i :   \r\n================= print task list end ========================\r\n",
             "h : - CTaskManager::printTaskList", "i :   CommonUtil::RestartService();"}));
  EXPECT_GT(told.Count("RestartService failed"), 5U);
}

TEST(StoryLog, ReportsFailedQueriesAsErrorsAndFailedSetsAsInformation) {
  EXPECT_LINES(TellShipped("query_status_code").Matching("status code"),
               "e :   result status code = 0x80000001\n\n");
  EXPECT_LINES(TellShipped("query_too_late").Matching("async_state"),
               "e :   async_state = Started\n");
  EXPECT_LINES(Tell(Inline("{'notebook': {'modem': {'query': ['canceled', 'error']}}}"))
                   .Matching("async_state"),
               Lines({"e :   async_state = Canceled", "e :   async_state = Error"}));
  const Told set = TellShipped("set_refused");
  EXPECT_LINES(set.Matching("status code"), "i :   result status code = 9\n\n");
  EXPECT_LINES(set.Matching("async_state"), "i :   async_state = Started\n");
  EXPECT_EQ(set.Count("e :   SetMbimCfun failed, will retry!!!"), 2U);
  const Told thrown = Tell(Inline(R"({'faults': [
    {'call': 'CommandSession::SendQueryCommandAsync', 'bad_alloc': true},
    {'call': 'CommandSession::SendSetCommandAsync'}]})"));
  EXPECT_LINES(thrown.Matching("exception "),
               Lines({"e :   exception : std::bad_alloc", "i :   exception other"}));
  EXPECT_EQ(Commands(thrown.report), "00*2 01000000");
}

TEST(StoryLog, ReadsTheVerificationSwitchesInOrder) {
  const std::string off =
      Lines({"i :   ReadIsDisableVerifyReg return -1", "h : + CommonUtil::ReadDWORDRegValue",
             "e :   RegQueryValueEx success, ret = 0", "h : - CommonUtil::ReadDWORDRegValue",
             "i :   find reg value is 0,return true", "h : - CommonUtil::IsDisableVerify",
             "h : + CMbnWinRtHelper::GetMbimCfun"});
  for (const char* name : {"verification_off_by_support_value", "verification_off_by_256"}) {
    EXPECT_LINES(TellShipped(name).Between("ReadIsDisableVerifyReg", "GetMbimCfun"), off) << name;
  }
  EXPECT_LINES(
      TellShipped("verification_off_by_disable_value")
          .Between("ret = 1", "+ CMbnWinRtHelper::GetMbimCfun"),
      Lines({"e :   RegQueryValueEx success, ret = 1", "h : - CommonUtil::ReadDWORDRegValue",
             "h : + CommonUtil::ReadDWORDRegValue", "e :   RegQueryValueEx success, ret = 1",
             "h : - CommonUtil::ReadDWORDRegValue", "i :   find reg value is 1,return true",
             "h : - CommonUtil::IsDisableVerify", "h : + CMbnWinRtHelper::GetMbimCfun"}));
}

TEST(StoryLog, ApprovesAnUnlistedPlatformWithoutAskingForTheModem) {
  const Told told = TellShipped("unlisted_platform");
  EXPECT_LINES(told.Between("+ IsCS24Project", "CS25 project"),
               Lines({"h : + IsCS24Project", "h : - IsCS24Project", "i :   CS25 project"}));
  EXPECT_LINES(told.Between("platform_modem_map_size", "VerifyPlatform pass"),
               Lines({"i :   platform_modem_map_size = 55 ;sizeof(platform_modem_map) = 1760 ; "
                      "sizeof(platform_modem_map[0] = 32 ; ",
                      "i :   not in platform list. VerifyPlatform return = true ",
                      "h : - CTaskAuthModule::VerifyPlatform",
                      "i :   Valid Modem in this platform.", "i :   VerifyPlatform pass"}));
}

TEST(StoryLog, RefusesTheWrongModem) {
  EXPECT_LINES(
      TellShipped("wrong_modem").Between("SMBIOS system version", "Cast Time"),
      Lines({"i :   SMBIOS system version = ThinkPad T14 Gen 5, Device modem_id = "
             "USB\\VID_3A5E&PID_4A11",
             "h : + CTaskAuthModule::IsSupportModem", "h : - CTaskAuthModule::IsSupportModem",
             "i :   VerifyPlatform return = false ", "h : - CTaskAuthModule::VerifyPlatform",
             "e :   Invalid Modem in this platform.", "h : - CTaskAuthModule::doJob",
             "i :   \r\n\r\n Deal Task CTaskAuthModule Cast Time 0.0160s\r\n"}));
}

TEST(StoryLog, CutsHardwareIds) {
  EXPECT_LINES(TellShipped("pci_device_beside_usb_modem").Between("GET device Hwid", "szAuthHwid"),
               Lines({"i :   GET device Hwid[2] : USB\\VID_3A5E&PID_4A10&REV_0318 ",
                      "i :   GET device Hwid[3] : PCI\\VEN_2F1B&DEV_0001&SUBSYS_00000000&REV_00 ",
                      "i :   find auth hwid : PCI\\VEN_2F1B&DEV_0001&SUBSYS_0000,return true",
                      "h : - CDeviceHelper::GetAuthDeviceHwid",
                      "i :   szAuthHwid = PCI\\VEN_2F1B&DEV_0001&SUBSYS_0000"}));
  // Of two on USB the later one counts; a device without an id keeps its number.
  const Told two = Tell(Inline(
      R"({'notebook': {'devices': ['USB\\VID_3A5E&PID_4A11&REV_0001', null, 'HID\\VID_1234']}})"));
  EXPECT_LINES(two.Between("GET device Hwid[2]", "find auth hwid"),
               Lines({"i :   GET device Hwid[2] : USB\\VID_3A5E&PID_4A11&REV_0001 ",
                      "i :   GET device Hwid[4] : HID\\VID_1234 ",
                      "i :   GET device Hwid[5] : USB\\VID_3A5E&PID_4A10&REV_0318&MI_00 ",
                      "i :   SetupDiEnumDeviceInfo return : 0 ,error code: 259 ",
                      "i :   find auth hwid : USB\\VID_3A5E&PID_4A10,return true"}));
  // The first mobile adapter alone is looked at, up or not.
  const Told other = Tell(Inline(
      R"({'notebook': {'adapters': [{'name': '{A}', 'if_type': 'wwan', 'instance_id': 'USB\\A'}]}})"));
  EXPECT_EQ(other.Count("Adapters Info: adapter name = {A}, "), 30U);
  EXPECT_EQ(other.Count("Adapters Info: "), 30U);
  EXPECT_EQ(Commands(other.report), "");
  EXPECT_LINES(TellShipped("pci_modem").Between("szMbimHwid", "not nuvelta"),
               Lines({"i :   szMbimHwid = PCI\\VEN_2F1B&DEV_0001&SUBSY",
                      "i :   not find Expected mbim hwid "
                      "(USB\\VID_3A5E&PID_4A10&MI_00;USB\\VID_3A5E&PID_4A11&MI_00;"
                      "USB\\VID_3A5E&PID_0A31&MI_00;USB\\VID_3A5E&PID_0A32&MI_00;),return",
                      "h : - CDeviceHelper::IsNuveltaMBIMDevcieExist",
                      "i :   MBIM Device is not nuvelta device."}));
}

}  // namespace
}  // namespace nuvelta::test
