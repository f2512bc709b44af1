// What the service reports to its host and writes about it: states, controls,
// sessions, resumes, retention.
#include <gtest/gtest.h>

#include <filesystem>
#include <map>

#include "story_support.h"

namespace nuvelta::test {
namespace {

Told TellShipped(const std::string& name) { return Tell(Shipped(name)); }

// "state/check point/wait hint/controls" of each report.
std::string Reports(const StoryReport& report) {
  std::string text;
  for (const auto& [process, status] : report.status_reports) {
    EXPECT_EQ(status.dwServiceType, 16U);
    EXPECT_EQ(status.dwWin32ExitCode, 0U);
    text += std::to_string(status.dwCurrentState) + "/" + std::to_string(status.dwCheckPoint) +
            "/" + std::to_string(status.dwWaitHint) + "/" +
            std::to_string(status.dwControlsAccepted) + " ";
  }
  return text;
}

TEST(StoryHost, CountsItsCheckPoints) {
  EXPECT_EQ(Reports(TellShipped("radio_already_on").report),
            "2/1/1000/0 4/0/0/129 3/2/0/129 1/0/0/129 ");
  EXPECT_EQ(Reports(TellShipped("pause_and_shutdown").report),
            "2/1/1000/0 4/0/0/129 6/2/0/129 5/3/0/129 3/4/0/129 1/0/0/129 ");
  // A new process counts afresh.
  EXPECT_EQ(Reports(TellShipped("self_restart").report),
            "2/1/1000/0 4/0/0/129 2/1/1000/0 4/0/0/129 3/2/0/129 1/0/0/129 ");
}

TEST(StoryHost, LogsControls) {
  const Told told = TellShipped("pause_and_shutdown");
  EXPECT_LINES(told.Between("CtrlCode = 0x2 ", "- ServiceCtrlHandler"),
               Lines({"i :   CtrlCode = 0x2 ; dwEventType = 0", "i :   SERVICE_CONTROL_PAUSE",
                      "h : + ReportServiceStatus", "i :   dwControlsAccepted = 0x81",
                      "h : - ReportServiceStatus", "h : - ServiceCtrlHandler"}));
  EXPECT_LINES(told.Between("CtrlCode = 0xc8", "ServiceCtrlHandler"),
               Lines({"i :   CtrlCode = 0xc8 ; dwEventType = 0", "h : - ServiceCtrlHandler"}));
  EXPECT_LINES(
      told.Between("CtrlCode = 0x5 ", "- ServiceCtrlHandler"),
      Lines({"i :   CtrlCode = 0x5 ; dwEventType = 0", "h : + ReportServiceStatus",
             "i :   dwControlsAccepted = 0x81", "h : - ReportServiceStatus",
             "i :   SERVICE_CONTROL_STOP", "h : + NService::stop",
             "h : + CTaskManager::GetTaskManagerInstance",
             "h : - CTaskManager::GetTaskManagerInstance", "h : + CTaskManager::exit",
             "h : - CTaskManager::exit", "h : - NService::stop",
             "i :   SERVICE_CONTROL_STOP g_pNService->stop(); exit", "h : - ServiceCtrlHandler"}));
}

std::string Refusals(const StoryReport& report) {
  std::string text;
  for (const auto& refused : report.refused_controls) text += Describe(refused) + "\n";
  return text;
}

TEST(StoryHost, GetsOnlyTheControlsThatItAccepts) {
  const Told told = TellShipped("controls_refused");
  EXPECT_EQ(Refusals(told.report),
            "1.000 s: control 1, error 1052, the service does not accept it\n"
            "1.000 s: control 4, error 1061, the service is starting or stopping\n"
            "1.000 s: control 14, not delivered\n"
            "10.000 s: control 2, error 1052, the service does not accept it\n"
            "10.000 s: control 3, error 1052, the service does not accept it\n"
            "10.000 s: control 5, not delivered\n"
            "10.000 s: control 6, error 1052, the service does not accept it\n"
            "10.000 s: control 20, error 87, there is no such control\n"
            "10.000 s: control 13, not delivered\n"
            "13.000 s: control 1, error 1061, the service is starting or stopping\n"
            "13.000 s: control 14, not delivered\n"
            "20.000 s: control 4, error 1062, the service does not run\n"
            "20.000 s: control 5, error 1062, the service does not run\n");
  EXPECT_LINES(told.Matching("CtrlCode"), Lines({"i :   CtrlCode = 0x4 ; dwEventType = 0",
                                                 "i :   CtrlCode = 0xc8 ; dwEventType = 0",
                                                 "i :   CtrlCode = 0x1 ; dwEventType = 0"}));
  EXPECT_EQ(Reports(told.report), "2/1/1000/0 4/0/0/129 3/2/0/129 1/0/0/129 ");
  EXPECT_EQ(Refusals(TellShipped("sessions_and_battery").report), "");
}

TEST(StoryHost, LogsSessionsBatteryAndRemovalAndDoesNothing) {
  const Told told = TellShipped("sessions_and_battery");
  EXPECT_LINES(
      told.Matching("SessionNumber"),
      Lines({"i :   [0]SessionNumber is: 0 ,wts.State = 4 (0 WTSActive ; 1 WTSConnected ;4 "
             "WTSDisconnected ;9 WTSInit ) , ,pWinStationName = Services ",
             "i :   [1]SessionNumber is: 3 ,pWinStationName = Console is active",
             "i :   [2]SessionNumber is: 3 ,wts.State = 4 (0 WTSActive ; 1 WTSConnected ;4 "
             "WTSDisconnected ;9 WTSInit ) , ,pWinStationName = RDP-Tcp "}));
  EXPECT_LINES(told.Between("dwEventType = 5", "WTS_SESSION_LOCK"),
               Lines({"i :   CtrlCode = 0xe ; dwEventType = 5",
                      "i :   SERVICE_CONTROL_SESSIONCHANGE :: WTS_SESSION_LOGON ",
                      "h : - ServiceCtrlHandler", "h : + ServiceCtrlHandler",
                      "i :   CtrlCode = 0xe ; dwEventType = 7",
                      "i :   SERVICE_CONTROL_SESSIONCHANGE :: WTS_SESSION_LOCK "}));
  EXPECT_LINES(told.Between("dwEventType = 11", "- ServiceCtrlHandler"),
               Lines({"i :   CtrlCode = 0xe ; dwEventType = 11", "h : - ServiceCtrlHandler"}));
  EXPECT_LINES(
      told.Between("SERVICE_CONTROL_POWEREVENT", "3124629325"),
      Lines({"i :   SERVICE_CONTROL_POWEREVENT",
             "i :   pPowerBroadcastSetting->PowerSetting =GUID_BATTERY_PERCENTAGE_REMAINING",
             "i :   ULONG32  tmp = 42%", "h : - ServiceCtrlHandler", "h : + ServiceCtrlHandler",
             "i :   CtrlCode = 0xd ; dwEventType = 32787", "i :   SERVICE_CONTROL_POWEREVENT",
             "i :   pPowerBroadcastSetting->PowerSetting != GUID_BATTERY_PERCENTAGE_REMAINING",
             "i :   pPowerBroadcastSetting->PowerSetting =  3124629325l -"}));
  EXPECT_EQ(told.Count("Device Removal. (\\\\?\\PCI#VEN_8086"), 1U);
  EXPECT_EQ(told.Count("TASK_TYPE_AUTH"), 1U);
}

TEST(StoryHost, DropsAnArrivalBeforeTheServiceObjectExists) {
  const Told told = TellShipped("arrival_during_start");
  EXPECT_LINES(told.Between("+ ServiceCtrlHandler", "- ServiceCtrlHandler"),
               Lines({"h : + ServiceCtrlHandler", "i :   CtrlCode = 0xb ; dwEventType = 32768",
                      "i :   Device Arrival. (\\\\?\\USB#VID_3A5E&PID_4A10&MI_00#6&2A1B3C4D&0&0000#"
                      "{cac88484-7515-4c03-82e6-71a87abac361})",
                      "h : - ServiceCtrlHandler"}));
}

// The Chinese words are in code page 936.
const std::string kStartUpTime =
    "PBT_APMRESUMEAUTOMATIC \xCF\xB5\xCD\xB3\xBF\xAA\xBB\xFA\xCA\xB1\xBC\xE4";

TEST(StoryHost, TellsQuickBootFromSleepByFiveSeconds) {
  const Told quick = TellShipped("quick_boot_resume");
  // The months of the logon are counted from 0, those of the suspend from 1.
  EXPECT_LINES(
      quick.Between("Event Type = 4", "+ CTaskManager::GetTaskManagerInstance"),
      Lines({"i :   PowerChanged: Event Type = 4 ( 4 PBT_APMSUSPEND; 7 PBT_APMRESUMESUSPEND ; 18 "
             "PBT_APMRESUMEAUTOMATIC)",
             "i :   PBT_APMSUSPEND g_szSuspendTime = 2026-11-16 00:59:46 ; g_suspendTime_t = "
             "1794790786",
             "i :   PowerChanged: Event Type = 18 ( 4 PBT_APMSUSPEND; 7 PBT_APMRESUMESUSPEND ; 18 "
             "PBT_APMRESUMEAUTOMATIC)",
             "i :   +getLastLogTime", "i :   dwRead = 192,dwNeeded = 0",
             "i :   find logon time !! 00 RecordNumber = 2 ; Event ID: 00006001 EventType: 4 ; "
             "EventCategory = 0 ; TimeGenerated = 1794790782 ;TimeWritten = 1794790782(2026-10-16 "
             "00:59:42 ) Source: Wlclntfy",
             "i :   -getLastLogTime",
             "i :   " + kStartUpTime + " = 2026-10-16 00:59:42 ; logonTime = 1794790782",
             "i :   PBT_APMRESUMEAUTOMATIC g_szSuspendTime = 2026-11-16 00:59:46 ; "
             "g_suspendTime_t = 1794790786",
             "i :   PBT_APMRESUMEAUTOMATIC is quick boot ; g_suspendTime_t - logonTime = 4",
             "h : + NService::dealQuickBoot", "h : + CTaskManager::GetTaskManagerInstance"}));
  // The twin has no scope of its own.
  EXPECT_LINES(
      TellShipped("sleep_resume").Between("is sleep or", "Event Type = 7"),
      Lines({"i :   PBT_APMRESUMEAUTOMATIC is sleep or   Hibernate ,then resume; "
             "g_suspendTime_t - logonTime = 5",
             "h : + CTaskManager::GetTaskManagerInstance",
             "h : - CTaskManager::GetTaskManagerInstance", "h : + CTaskManager::cleanNotDealTasks",
             "h : - CTaskManager::cleanNotDealTasks", "h : + CTaskFactory::createTask",
             "i :   CTaskFactory createTask TASK_TYPE_AUTH", "h : + CTaskManager::addTask",
             "i :   taskElement.iPriority = 0(0 TASK_PRIORITY_HIGH ; 1 TASK_PRIORITY_MEDIUM "
             "; 2 TASK_PRIORITY_LOW);  list size = 0",
             "i :   find equel priority task Element iPriority = 0; list old size = 0",
             "i :   the same task type id(100 < 100 TASK_TYPE_ID_CHANGE_USB_MODE ; 200 "
             "TASK_TYPE_ID_CHECK_STATUS ; 300 TASK_TYPE_ID_QUICK_BOOT ; 400 "
             "TASK_TYPE_ID_UNZIP_FIRMWARE ; 500 TASK_TYPE_ID_UPGRADE ; 600 "
             "TASK_TYPE_ID_UPGRADE_FROM_EDL ; 700 TASK_TYPE_ID_UPGRADE_FROM_NORMAL>) is not "
             "exist , add the task",
             "i :   find equel priority task Element iPriority = 0; push back new task "
             ":CTaskAuthModule ,after that list size = 1",
             "h : - CTaskManager::addTask",
             "i :   PowerChanged: Event Type = 7 ( 4 PBT_APMSUSPEND; 7 PBT_APMRESUMESUSPEND "
             "; 18 PBT_APMRESUMEAUTOMATIC)"}));
}

TEST(StoryHost, FindsTheLogonInLocalTime) {
  // A warning of the source and the source in other case are passed over.
  EXPECT_LINES(TellShipped("hibernate_resume").Matching(kStartUpTime),
               "i :   " + kStartUpTime + " = 2026-10-15 16:58:46 ; logonTime = 1794758326\n");
  const Told forgotten = TellShipped("no_logon_recorded");
  EXPECT_LINES(
      forgotten.Between("not find logon", "is sleep or"),
      Lines({"i :   not find logon time,because start long long ago , so set a fake time = "
             "2026-11-29 09:01:30 : one day ago",
             "i :   -getLastLogTime",
             "i :   " + kStartUpTime + " = 2026-11-29 09:01:30 ; logonTime = 1798534890",
             "i :   PBT_APMRESUMEAUTOMATIC g_szSuspendTime = 2027-01-05 09:01:00 ; "
             "g_suspendTime_t = 1799139660",
             "i :   PBT_APMRESUMEAUTOMATIC is sleep or   Hibernate ,then resume; "
             "g_suspendTime_t - logonTime = 604770"}));
  EXPECT_LINES(TellShipped("event_log_locked").Between("+getLastLogTime", "is sleep or"),
               Lines({"i :   +getLastLogTime", "e :   Could not open the Application event log.",
                      "i :   " + kStartUpTime + " =  ; logonTime = 0",
                      "i :   PBT_APMRESUMEAUTOMATIC g_szSuspendTime = 2026-11-16 00:59:46 ; "
                      "g_suspendTime_t = 1794790786",
                      "i :   PBT_APMRESUMEAUTOMATIC is sleep or   Hibernate ,then resume; "
                      "g_suspendTime_t - logonTime = 1794790786"}));
}

TEST(StoryHost, ClearsARunningTaskWhateverItSays) {
  EXPECT_LINES(
      TellShipped("resume_during_job").Between("+ CTaskManager::cleanNotDealTasks", "- CTask"),
      Lines({"h : + CTaskManager::cleanNotDealTasks",
             "i :   [1]: do not clean dealing task iPriority 0(0 TASK_PRIORITY_HIGH ; 1 "
             "TASK_PRIORITY_MEDIUM ; 2 TASK_PRIORITY_LOW) CTaskAuthModule  retry times = 30",
             "h : - CTaskManager::cleanNotDealTasks"}));
  EXPECT_LINES(
      TellShipped("resume_without_suspend").Matching("]: clean"),
      Lines({"i :   [1]: clean not dealing task iPriority 0(0 TASK_PRIORITY_HIGH ; 1 "
             "TASK_PRIORITY_MEDIUM ; 2 TASK_PRIORITY_LOW) CTaskAuthModule retry times = 27",
             "i :   [1]: clean not dealing task iPriority 0(0 TASK_PRIORITY_HIGH ; 1 "
             "TASK_PRIORITY_MEDIUM ; 2 TASK_PRIORITY_LOW) CTaskAuthModule retry times = 0"}));
}

TEST(StoryHost, ReplacesAShortNameByTheFamily) {
  EXPECT_LINES(TellShipped("blank_version").Matching("SMBIOS system project_name"),
               Lines({"i :   SMBIOS system project_name =  ",
                      "i :   SMBIOS system project_name = ThinkPad L14 Gen 5 \xA3\xAC replace by "
                      "family"}));
}

TEST(StoryHost, PrunesOldLogs) {
  const Told told = TellShipped("old_logs");
  const std::string folder = "C:\\ProgramData\\Nuvelta Wireless Inc\\MAService\\HX2208GW";
  std::string text = told.Matching("delete");
  text.erase(text.find("i :   find the same task"));
  EXPECT_LINES(
      text,
      Lines({"i :   because dwLogFolderSize: 120.000 MB > max_size  = 100.000 MB ; delete log "
             "file[1] (nuvelta_maservice_monitor_HX2208GW_2026-08-17_00.58.46.log) "
             "filesize[5.000 MB] ,after delete dwLogFolderSize = 115.000 MB",
             "i :   because item.time_diff[91.00000 day] > max_diff[90.00000 day] ; delete log "
             "file[2] (nuvelta_maservice_monitor_HX2208GW_2026-08-17_00.58.46.log)",
             "i :   because dwLogFolderSize: 115.000 MB > max_size  = 100.000 MB ; delete log "
             "file[3] (nuvelta_maservice_monitor_HX2208GW_2026-08-28_00.58.46.log) "
             "filesize[10.000 MB] ,after delete dwLogFolderSize = 105.000 MB",
             "i :   because dwLogFolderSize: 105.000 MB > max_size  = 100.000 MB ; delete log "
             "file[4] (nuvelta_maservice_monitor_HX2208GW_2026-11-05_18.58.46.log) "
             "filesize[15.000 MB] ,after delete dwLogFolderSize = 90.000 MB"}));
  EXPECT_LINES(
      told.Matching("DeleteFile "),
      "e :   DeleteFile " + folder +
          "\\nuvelta_maservice_monitor_HX2208GW_2026-08-28_00.58.46.log fail,error code 32\n");
}

// Name and size of the files in the log folder when the story has ended.
std::map<std::string, uintmax_t> LogFilesAfter(const std::string& name) {
  const TemporaryFolder disk;
  const Scenario scenario = Shipped(name);
  story::Play(scenario, {.disk = disk.Path(), .seed = {}});
  std::map<std::string, uintmax_t> files;
  for (const auto& file :
       std::filesystem::directory_iterator(story::LogFolder(scenario, disk.Path()))) {
    files[file.path().filename().string()] = file.file_size();
  }
  return files;
}

TEST(StoryHost, DeletesOldLogFiles) {
  const auto files = LogFilesAfter("old_logs");
  // The one in use, six of the young ones, and the log itself.
  EXPECT_EQ(files.size(), 8U);
  EXPECT_TRUE(files.contains("nuvelta_maservice_monitor_HX2208GW_2026-08-28_00.58.46.log"));
  EXPECT_TRUE(files.contains("nuvelta_maservice_monitor_HX2208GW_2026-11-05_19.58.46.log"));
}

TEST(StoryHost, LeavesAnEmptyFileWithTheLogSwitchedOff) {
  const std::map<std::string, uintmax_t> empty{
      {"nuvelta_maservice_monitor_HX2208GW_2026-11-16_00.58.46.log", 0}};
  EXPECT_EQ(LogFilesAfter("logging_off"), empty);
}

// With these seeds the main thread is about to begin the worker.
TEST(StoryHost, EndsAProcessThatIsKilledAtItsStart) {
  const Scenario scenario =
      Inline("{'events': [{'at': 0, 'do': 'start'}, {'at': 0.031, 'do': 'kill'}]}");
  for (uint64_t seed = 31000; seed < 31020; ++seed) {
    EXPECT_EQ(Tell(scenario, seed).report.deadlock, "") << seed;
  }
}

// A service that fails for ever restarts itself for ever; the story ends all the same.
TEST(StoryHost, EndsAStoryInTheMiddleOfARestart) {
  Scenario scenario = Inline(R"({'faults': [{'call': 'DataWriter::WriteBytes', 'bad_alloc': true,
      'count': 'always'}]})");
  for (int ms = 8000; ms < 9500; ms += 25) {
    scenario.rest_within = std::chrono::milliseconds(ms);
    const StoryReport report = Tell(scenario).report;
    EXPECT_LE(report.processes.size(), 2U) << ms;
  }
}

}  // namespace
}  // namespace nuvelta::test
