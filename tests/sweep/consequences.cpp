#include "consequences.h"

#include <algorithm>
#include <array>
#include <utility>

namespace nuvelta::test {

namespace {

constexpr std::string_view kGet = "CMbnWinRtHelper::GetMbimCfun";
constexpr std::string_view kSet = "CMbnWinRtHelper::SetMbimCfun";
constexpr std::string_view kExist = "CMbnWinRtHelper::IsMbimExist";
constexpr std::string_view kStart = "CMbnWinRtHelper::StartMobileBroadbandAccountWatcher";
constexpr std::string_view kPresence = "CDeviceHelper::IsNuveltaMBIMDevcieExist";
constexpr std::string_view kHwid = "CDeviceHelper::GetAuthDeviceHwid";
constexpr std::string_view kReader = "CommonUtil::ReadDWORDRegValue";
constexpr std::string_view kName = "CommonUtil::GetServiceName";
constexpr std::string_view kRestart = "CommonUtil::RestartService";
constexpr std::string_view kVerify = "CTaskAuthModule::VerifyPlatform";
constexpr std::string_view kJob = "CTaskAuthModule::doJob";
constexpr std::string_view kMain = "ServiceMain";
constexpr std::string_view kRetention = "DeleteFileWhileExceedMaxSizeAndTime";
constexpr std::string_view kControl = "ServiceCtrlHandler";
constexpr std::string_view kNone;

constexpr std::string_view kBranch =
    "i :   bIsException happend ,will add Exception times and retry";
constexpr std::string_view kGetExit = "h : - CMbnWinRtHelper::GetMbimCfun";
constexpr std::string_view kSetExit = "h : - CMbnWinRtHelper::SetMbimCfun";
constexpr std::string_view kGetFailed = "i :   get cfun fail,retry";
constexpr std::string_view kSetFailed = "e :   SetMbimCfun failed, will retry!!!";
constexpr std::string_view kPresenceExit = "h : - CDeviceHelper::IsNuveltaMBIMDevcieExist";
constexpr std::string_view kAbsent = "i :   MBIM Device is not nuvelta device.";
constexpr std::string_view kNotFcc = "e :   isFccMode = false  , exit";
constexpr std::string_view kNameless = "e :   Find service name fail,return false";
constexpr std::string_view kNameExit = "h : - CommonUtil::GetServiceName";
constexpr std::string_view kRestartExit = "h : - CommonUtil::RestartService";

using Rows = std::vector<Consequence>;

// Calls of the query, of the set command, or of both: the exception becomes a
// line, at error level in the query only, and the exception branch.
void AddCommandChannel(Rows& rows) {
  struct Call {
    std::string_view name;
    bool get;
    bool set;
    bool null = false;  // a null object is an exception where it is used
  };
  constexpr std::array kCalls{
      Call{"CommandOperation::Completed", true, true},
      Call{"CommandOperation::GetResults", true, true, true},
      Call{"CommandResult::ResponseData", true, false},
      Call{"CommandResult::StatusCode", true, true},
      Call{"CommandSession::CloseSession", true, true},
      Call{"CommandSession::SendQueryCommandAsync", true, false, true},
      Call{"CommandSession::SendSetCommandAsync", false, true, true},
      Call{"DataBuffer::Buffer", true, false},
      Call{"DataBuffer::Length", true, false},
      Call{"DataWriter::DetachBuffer", true, true, true},
      Call{"DataWriter::WriteBytes", true, true},
      Call{"DeviceService::OpenCommandSession", true, true},
      Call{"DeviceServiceInformation::DeviceServiceId", true, false},
      Call{"DeviceServiceList::GetAt", true, false, true},
      Call{"DeviceServiceList::Size", true, false},
      Call{"MobileBroadband::CreateDataWriter", true, true, true},
      Call{"MobileBroadband::GetDefault", true, true},
      Call{"Modem::DeviceServices", true, false, true},
      Call{"Modem::GetDeviceService", true, true},
  };
  for (const Call& call : kCalls) {
    if (call.get) {
      rows.push_back(
          {call.name, How::kHresult, kGet, {"e :   exception other", kGetExit, kBranch}});
      rows.push_back({call.name,
                      How::kBadAlloc,
                      kGet,
                      {"e :   exception : std::bad_alloc", kGetExit, kBranch}});
    }
    if (call.get && call.null) {
      rows.push_back({call.name, How::kNull, kGet, {"e :   exception other", kGetExit, kBranch}});
    }
    if (call.set && call.null) {
      rows.push_back({call.name, How::kNull, kSet, {"i :   exception other", kSetExit, kBranch}});
    }
    if (call.set) {
      rows.push_back(
          {call.name, How::kHresult, kSet, {"i :   exception other", kSetExit, kBranch}});
      rows.push_back({call.name,
                      How::kBadAlloc,
                      kSet,
                      {"i :   exception : std::bad_alloc", kSetExit, kBranch}});
    }
  }
  // Where the modem throws without the fault, the null object comes a line later.
  rows.push_back({"CommandSession::SendQueryCommandAsync",
                  How::kNull,
                  kGet,
                  {"i :   -SendQueryCommandAsync", "e :   exception other", kGetExit, kBranch}});
  // An event that cannot be had for the wait is a platform exception as well.
  rows.push_back({"CreateEventW", How::kError, kGet, {"e :   exception other", kGetExit, kBranch}});
  rows.push_back({"CreateEventW", How::kError, kSet, {"i :   exception other", kSetExit, kBranch}});
}

// These null objects are no exception: a line, and a retry without counting one.
void AddNullObjects(Rows& rows) {
  constexpr How null = How::kNull;
  rows.push_back({"MobileBroadband::GetDefault", null, kJob, {"i :   MBIM Device is not exist."}});
  rows.push_back({"MobileBroadband::GetDefault",
                  null,
                  kGet,
                  {"e :   MBIM Modem is not exist!", kGetExit, kGetFailed}});
  rows.push_back({"MobileBroadband::GetDefault",
                  null,
                  kSet,
                  {"e :   MBIM Modem is not exist!", kSetExit, kSetFailed}});
  constexpr std::string_view kNoService =
      "e :   GetDeviceService() failed. qbi_uuid ={11223344-5566-7788-99AA-BBCCDDEEFF11}";
  constexpr std::string_view kNoServiceInSet =
      "i :   GetDeviceService() failed. qbi_uuid ={11223344-5566-7788-99AA-BBCCDDEEFF11}";
  rows.push_back({"Modem::GetDeviceService", null, kGet, {kNoService, kGetExit, kGetFailed}});
  rows.push_back({"Modem::GetDeviceService", null, kSet, {kNoServiceInSet, kSetExit, kSetFailed}});
  rows.push_back({"DeviceService::OpenCommandSession",
                  null,
                  kGet,
                  {"e :   OpenCommandSession() failed.", kGetExit, kGetFailed}});
  rows.push_back({"DeviceService::OpenCommandSession",
                  null,
                  kSet,
                  {"i :   OpenCommandSession() failed.", kSetExit, kSetFailed}});
  // No data at all is a failed query.
  for (const std::string_view call : {"CommandResult::ResponseData", "DataBuffer::Buffer"})
    rows.push_back({call, null, kGet, {kGetExit, kGetFailed}});
  // Asked only whether there is a modem, nothing is counted.
  rows.push_back({"MobileBroadband::GetDefault",
                  How::kHresult,
                  kExist,
                  {"e :   exception other", "h : - CMbnWinRtHelper::IsMbimExist",
                   "i :   MBIM Device is not exist."}});
  rows.push_back({"MobileBroadband::GetDefault",
                  How::kBadAlloc,
                  kExist,
                  {"e :   exception : std::bad_alloc", "h : - CMbnWinRtHelper::IsMbimExist",
                   "i :   MBIM Device is not exist."}});
}

// Setting up catches nothing; starting catches what has a message.
void AddAccountWatcher(Rows& rows) {
  for (const std::string_view call :
       {"AccountWatcher::AccountAdded", "AccountWatcher::AccountRemoved",
        "AccountWatcher::EnumerationCompleted", "MobileBroadband::CreateAccountWatcher"}) {
    rows.push_back({call, How::kHresult, kNone, {}, Outcome::kCrash});
    rows.push_back({call, How::kBadAlloc, kNone, {}, Outcome::kCrash});
  }
  rows.push_back({"MobileBroadband::CreateAccountWatcher", How::kNull, kNone, {}, Outcome::kCrash});
  for (const std::string_view call : {"AccountWatcher::Start", "AccountWatcher::Status"}) {
    rows.push_back({call, How::kHresult, kNone, {}, Outcome::kCrash});
    rows.push_back({call,
                    How::kBadAlloc,
                    kStart,
                    {"i :   exception : std::bad_alloc",
                     "h : - CMbnWinRtHelper::StartMobileBroadbandAccountWatcher",
                     "h : - CMbnWinRtHelper::Init"},
                    Outcome::kUnheard});
  }
}

void AddServiceHost(Rows& rows) {
  constexpr How error = How::kError;
  const auto add = [&](std::string_view call, std::string_view scope,
                       std::vector<std::string_view> lines, Outcome outcome = Outcome::kSame) {
    rows.push_back({call, error, scope, std::move(lines), outcome});
  };
  add("StartServiceCtrlDispatcherW", kNone,
      {"i :   N auth Service: Main: StartServiceCtrlDispatcher returned error : 1063"},
      Outcome::kNoDispatcher);
  add("LookUpNtQuerySystemInformation", kMain,
      {"e :   Get NtQuerySystemInformation Addr Failed!\n", "i :   filename: *"});
  add("NtQuerySystemInformation", kMain, {"i :   filename: *"});
  add("FileTimeToLocalFileTime", kMain, {"i :   Date: *", "i :   filename: *"});
  add("FileTimeToSystemTime", kMain,
      {"i :   Date: 00-00-0000\nTime: 00:00:00\n", "i :   filename: *"});
  add("GetModuleFileNameW", kMain, {"i :   filename: "});
  for (const std::string_view call :
       {"GetFileVersionInfoSizeW", "GetFileVersionInfoW", "VerQueryValueW", "HeapAlloc"}) {
    add(call, kMain, {"i :   dwSessionCount: *"});
  }
  add("WTSEnumerateSessionsW", kMain, {"i :   WTSEnumerateSessions failed. GetLastError: 1722"});
  add("RegisterServiceCtrlHandlerExW", kMain,
      {"e :   RegisterServiceCtrlHandler returned error", "h : - ServiceMain"}, Outcome::kNoStatus);
  add("RegisterSuspendResumeNotification", kMain,
      {"e :   RegisterSuspendResumeNotification returned error",
       "h : + RegisterUsbDeviceNotification"},
      Outcome::kUnheard);
  add("RegisterDeviceNotificationW", "RegisterUsbDeviceNotification",
      {"e :   RegisterDeviceNotification error 0x0000000d", "h : - RegisterUsbDeviceNotification"},
      Outcome::kUnheard);
  add("CreateEventW", kMain,
      {"e :   CreateEvent returned error", "h : + ReportServiceStatus",
       "i :   dwControlsAccepted = 0x81", "h : - ReportServiceStatus", "h : - ServiceMain"},
      Outcome::kNoEvent);
  // The worker's own event: the worker looks for tasks at intervals, and nobody
  // else runs when it is signalled.
  add("CreateEventW", "CTaskManager::dealTaskThread", {"h : + CTaskManager::getTask"});
  add("CreateEventW", "CTaskManager::addTask", {"h : - CTaskManager::addTask"});
  // A process that never needed it, and its successor.
  add("CreateEventW", kNone, {"i :   \r\n==================================   NService start *"},
      Outcome::kUnknown);
  add("CreateThread", "CTaskManager::init",
      {"i :   Create task deal thread failed, errcode(0x8).\r\n", "h : - CTaskManager::init"},
      Outcome::kNoWorker);
  add("OpenEventLogW", kNone,
      {"e :   Could not open the Application event log.",
       "i :   PBT_APMRESUMEAUTOMATIC \xCF\xB5\xCD\xB3\xBF\xAA\xBB\xFA\xCA\xB1\xBC\xE4 =  ; "
       "logonTime = 0"});
  add("ReadEventLogW", kNone,
      {"i :   not find logon time,because start long long ago , so set a fake time = *",
       "i :   -getLastLogTime"});
}

void AddSelfRestart(Rows& rows) {
  constexpr How error = How::kError;
  rows.push_back({"OpenSCManagerW",
                  error,
                  kName,
                  {"e :   OpenSCManager fail,error code 0x5", kNameExit, kNameless, kRestartExit}});
  for (const std::string_view call : {"EnumServicesStatusExW", "LocalAlloc"}) {
    rows.push_back({call, error, kName, {kNameExit, kNameless, kRestartExit}});
  }
  rows.push_back({"ShellExecuteExW",
                  error,
                  kRestart,
                  {"i :    RestartService failed.Error = 0x4c7", kRestartExit}});
  // The name is lost between its two forms, so nothing is started again.
  rows.push_back({"MultiByteToWideChar", error, kRestart, {"i :   buffer *"}, Outcome::kNoStart});
  rows.push_back({"WideCharToMultiByte",
                  error,
                  kName,
                  {"i :   Service Name: \n", kNameExit},
                  Outcome::kNoStart});
  rows.push_back({"WideCharToMultiByte", error, kRestart, {"i :   buffer "}});
}

// Everything here that cannot be read counts as absent.
void AddModemPresence(Rows& rows) {
  constexpr How error = How::kError;
  rows.push_back({"GetAdaptersAddresses",
                  error,
                  kPresence,
                  {"i :   not get adapter,return ", kPresenceExit, kAbsent}});
  rows.push_back({"HeapAlloc",
                  error,
                  kPresence,
                  {"e :   GetAdaptersAddresses AF_UNSPEC failed", kPresenceExit, kAbsent}});
  for (const std::string_view call :
       {"RegEnumKeyExA", "RegOpenKeyExA", "RegQueryValueExA", "SetupDiOpenClassRegKeyExW"}) {
    rows.push_back(
        {call, error, kPresence, {"i :   not get hardware id,return", kPresenceExit, kAbsent}});
  }
  rows.push_back({"WideCharToMultiByte", error, kPresence, {"i :   Adapters Info: *"}});
  // Text that cannot be converted is no match: the service is not in the list.
  rows.push_back({"WideCharToMultiByte",
                  error,
                  kGet,
                  {"i :   module current version not support MA,return", kGetFailed}});
}

void AddPlatform(Rows& rows) {
  constexpr How error = How::kError;
  constexpr Outcome final = Outcome::kFinal;
  // A firmware that cannot be read has no texts, and an unknown platform passes;
  // it has no FCC structure either.
  for (const std::string_view call : {"GetSystemFirmwareTable", "HeapAlloc"}) {
    rows.push_back(
        {call,
         error,
         kVerify,
         {"i :   SMBIOS system project_name = ",
          "i :   SMBIOS system project_name =  \xA3\xAC replace by family", "h : + IsCS24Project"},
         final});
    rows.push_back({call,
                    error,
                    kVerify,
                    {"i :   platform_modem_map_size = 55 ;*",
                     "i :   not in platform list. VerifyPlatform return = true "},
                    final});
    rows.push_back({call, error, kJob, {"i :   smBiosDataSize:*"}, final});
    rows.push_back({call, error, kJob, {kNotFcc, "h : - CTaskAuthModule::doJob"}, final});
  }
  rows.push_back({"SetupDiGetClassDevsW",
                  error,
                  kHwid,
                  {"i :   SetupDiGetClassDevs failed return INVALID_HANDLE_VALUE ,error code 13 "
                   "\xA3\xAC"
                   "exit false",
                   "h : - CDeviceHelper::GetAuthDeviceHwid",
                   "i :   szAuthHwid = ", "i :   Get Nuvelta Device HardwareID Faild",
                   "i :   VerifyPlatform return = false "},
                  final});
  rows.push_back({"SetupDiEnumDeviceInfo",
                  error,
                  kHwid,
                  {"i :   SetupDiEnumDeviceInfo return : 0 ,error code: 13 "},
                  final});
  for (const std::string_view next :
       {"i :   GET device Hwid[*", "i :   SetupDiEnumDeviceInfo return : 0 ,error code: 259 "}) {
    rows.push_back({"SetupDiGetDeviceRegistryPropertyW", error, kHwid, {next}, final});
  }
  rows.push_back({"WideCharToMultiByte", error, kHwid, {"i :   GET device Hwid[*"}, final});
  // A call that has failed leaves its error, which is what the reader logs.
  rows.push_back(
      {"WideCharToMultiByte", error, kReader, {"e :   RegOpenKeyEx FAIL ,ERROR code = 1113"}});
  // The registry switches: what cannot be read is absent.
  rows.push_back({"RegOpenKeyExW",
                  error,
                  kReader,
                  {"e :   RegOpenKeyEx FAIL ,ERROR code = *", "h : - CommonUtil::ReadDWORDRegValue",
                   "i :   NOT find reg*"},
                  final});
  rows.push_back({"RegQueryValueExW",
                  error,
                  kReader,
                  {"e :   RegQueryValueEx FAIL ,ERROR code = *",
                   "h : - CommonUtil::ReadDWORDRegValue", "i :   NOT find reg*"},
                  final});
  rows.push_back({"HeapAlloc",
                  error,
                  kReader,
                  {"h : - CommonUtil::ReadDWORDRegValue", "i :   NOT find reg*"},
                  final});
}

void AddLogFiles(Rows& rows) {
  constexpr How error = How::kError;
  constexpr std::string_view kDone = "h : - DeleteFileWhileExceedMaxSizeAndTime";
  rows.push_back({"DeleteFileA", error, kRetention, {"e :   DeleteFile *"}});
  rows.push_back({"FindFirstFileA", error, kRetention, {kDone}});
  for (const std::string_view next : {"i :   dwLogFolderSize: *", "i :   because *"}) {
    rows.push_back({"FindNextFileA", error, kRetention, {next}});
  }
  // The log lies below the root of the disk, or the retention looks there.
  rows.push_back({"GetVariable",
                  error,
                  kRetention,
                  {"i :   check path : \\Nuvelta Wireless Inc\\MAService\\HX2208GW\\*"}});
  for (const std::string_view next :
       {kDone, std::string_view("i :   dwLogFolderSize: *"), std::string_view("i :   because *")}) {
    rows.push_back({"GetVariable", error, kRetention, {next}});
  }
  // Texts that are only logged are empty.
  rows.push_back({"WideCharToMultiByte", error, kMain, {"i :   filename: "}});
  rows.push_back({"WideCharToMultiByte", error, kMain, {"i :   [*"}});
  rows.push_back({"WideCharToMultiByte", error, kControl, {"i :   Device Arrival. ()"}});
  rows.push_back({"WideCharToMultiByte", error, kControl, {"i :   Device Removal. ()"}});
  rows.push_back({"WideCharToMultiByte", error, kNone, {"i :   find logon time !! *"}});
}

// A task that cannot be had: its trigger is given up without a word. Of the start's
// the worker shows it, which finds no task.
void AddTasks(Rows& rows) {
  const auto add = [&](std::string_view scope, std::vector<std::string_view> lines) {
    rows.push_back({"HeapAlloc", How::kError, scope, std::move(lines), Outcome::kUnheard});
  };
  add("NService::dealDeviceArrive", {"h : - NService::dealDeviceArrive"});
  add("NService::dealQuickBoot", {"h : - NService::dealQuickBoot"});
  add("CMbnWinRtHelper::AccountAddedHandler", {"h : - CMbnWinRtHelper::AccountAddedHandler"});
  add(kNone, {"i :   PowerChanged: Event Type = 7 *"});
  add(kMain, {"i :   \nNService::Run leave\n"});
  add(kNone, {"h : + CTaskManager::dealTaskThread", "h : + CTaskManager::getTask",
              "h : - CTaskManager::getTask"});
  // Without a worker nothing does: the platform's thread goes on.
  add(kNone, {"h : + CMbnWinRtHelper::AccountEnumHandler"});
}

// Calls whose failure shows in no line of its own.
void AddSilent(Rows& rows) {
  constexpr How error = How::kError;
  rows.push_back({"_mkdir", error});
  rows.push_back({"RegisterPowerSettingNotification", error, kNone, {}, Outcome::kUnheard});
  rows.push_back({"ResetEvent", error});
  rows.push_back({"SetEvent", error, kNone, {}, Outcome::kSignal});
  rows.push_back({"SetServiceStatus", error, kNone, {}, Outcome::kReport});
  rows.push_back({"StartDetachedThread", error});
  rows.push_back({"WaitForSingleObject", error, kNone, {}, Outcome::kWait});
}

Rows AllRows() {
  Rows rows;
  AddCommandChannel(rows);
  AddNullObjects(rows);
  AddAccountWatcher(rows);
  AddServiceHost(rows);
  AddSelfRestart(rows);
  AddModemPresence(rows);
  AddPlatform(rows);
  AddLogFiles(rows);
  AddTasks(rows);
  AddSilent(rows);
  return rows;
}

template <size_t Count>
bool Holds(const std::array<std::string_view, Count>& calls, std::string_view call) {
  return std::ranges::find(calls, call) != calls.end();
}

}  // namespace

std::span<const Consequence> Consequences() {
  static const Rows rows = AllRows();
  return rows;
}

bool MayLeaveNoTrace(std::string_view call, How how) {
  // The answer without the fault is the same failure, or the last of a list, or
  // about something that no line is written of, or that is never needed.
  static constexpr std::array<std::string_view, 22> kCalls{"CreateEventW",
                                                           "DeleteFileA",
                                                           "FileTimeToLocalFileTime",
                                                           "FindNextFileA",
                                                           "GetAdaptersAddresses",
                                                           "GetVariable",
                                                           "ReadEventLogW",
                                                           "RegEnumKeyExA",
                                                           "RegOpenKeyExA",
                                                           "RegOpenKeyExW",
                                                           "RegQueryValueExA",
                                                           "RegQueryValueExW",
                                                           "RegisterPowerSettingNotification",
                                                           "SetupDiEnumDeviceInfo",
                                                           "SetupDiGetDeviceRegistryPropertyW",
                                                           "WideCharToMultiByte",
                                                           "_mkdir",
                                                           "NtQuerySystemInformation",
                                                           "ResetEvent",
                                                           "SetEvent",
                                                           "SetServiceStatus",
                                                           "WaitForSingleObject"};
  // The modem may have thrown the same.
  if (how == How::kHresult) return call == "CommandSession::SendQueryCommandAsync";
  if (how == How::kNull) {
    return call == "CommandResult::ResponseData" || call == "DataWriter::DetachBuffer" ||
           call == "MobileBroadband::GetDefault";
  }
  return how == How::kError && Holds(kCalls, call);
}

}  // namespace nuvelta::test
