#include "consequences.h"

#include <algorithm>
#include <array>
#include <stdexcept>

#include "notebook/model/port_calls.h"

namespace nuvelta::test {

namespace {

// A row: calls | how they fail | scope around them, - for none | outcome | line | line ...
// A line is - for the scope's exit line, ends with * where only its beginning counts, and
// has bytes that are not printable as \xNN; {what} is what an exception of that kind is
// called. "no trace" instead of lines: the log need not show it. What is indented goes on
// with the row above it; of two rows that fit the upper one counts.
constexpr const char* kTable = R"(
# The query and the set command: the exception becomes a line, at error level in the query
# only, and the exception branch.
CommandOperation::Completed CommandOperation::GetResults CommandResult::ResponseData
  CommandResult::StatusCode CommandSession::CloseSession CommandSession::SendQueryCommandAsync
  DataBuffer::Buffer DataBuffer::Length DataWriter::DetachBuffer DataWriter::WriteBytes
  DeviceService::OpenCommandSession DeviceServiceInformation::DeviceServiceId
  DeviceServiceList::GetAt DeviceServiceList::Size MobileBroadband::CreateDataWriter
  MobileBroadband::GetDefault Modem::DeviceServices Modem::GetDeviceService
  | hresult bad_alloc | CMbnWinRtHelper::GetMbimCfun | same | e :   exception {what} | -
  | i :   bIsException happend ,will add Exception times and retry
CommandOperation::Completed CommandOperation::GetResults CommandResult::StatusCode
  CommandSession::CloseSession CommandSession::SendSetCommandAsync DataWriter::DetachBuffer
  DataWriter::WriteBytes DeviceService::OpenCommandSession MobileBroadband::CreateDataWriter
  MobileBroadband::GetDefault Modem::GetDeviceService
  | hresult bad_alloc | CMbnWinRtHelper::SetMbimCfun | same | i :   exception {what} | -
  | i :   bIsException happend ,will add Exception times and retry
# A null object is an exception where it is used; where the modem throws without the fault,
# it comes a line later.
CommandOperation::GetResults CommandSession::SendQueryCommandAsync DataWriter::DetachBuffer
  DeviceServiceList::GetAt MobileBroadband::CreateDataWriter Modem::DeviceServices
  | null | CMbnWinRtHelper::GetMbimCfun | same | e :   exception other | -
  | i :   bIsException happend ,will add Exception times and retry
CommandSession::SendQueryCommandAsync | null | CMbnWinRtHelper::GetMbimCfun | same
  | i :   -SendQueryCommandAsync | e :   exception other | -
  | i :   bIsException happend ,will add Exception times and retry
CommandOperation::GetResults CommandSession::SendSetCommandAsync DataWriter::DetachBuffer
  MobileBroadband::CreateDataWriter | null | CMbnWinRtHelper::SetMbimCfun | same
  | i :   exception other | - | i :   bIsException happend ,will add Exception times and retry
# An event that cannot be had for the wait is a platform exception as well.
CreateEventW | error | CMbnWinRtHelper::GetMbimCfun | same
  | e :   exception other | - | i :   bIsException happend ,will add Exception times and retry
CreateEventW | error | CMbnWinRtHelper::SetMbimCfun | same
  | i :   exception other | - | i :   bIsException happend ,will add Exception times and retry

# These null objects are no exception: a line, and a retry without counting one.
MobileBroadband::GetDefault | null | CTaskAuthModule::doJob | same
  | i :   MBIM Device is not exist.
MobileBroadband::GetDefault | null | CMbnWinRtHelper::GetMbimCfun | same
  | e :   MBIM Modem is not exist! | - | i :   get cfun fail,retry
MobileBroadband::GetDefault | null | CMbnWinRtHelper::SetMbimCfun | same
  | e :   MBIM Modem is not exist! | - | e :   SetMbimCfun failed, will retry!!!
Modem::GetDeviceService | null | CMbnWinRtHelper::GetMbimCfun | same
  | e :   GetDeviceService() failed. qbi_uuid ={11223344-5566-7788-99AA-BBCCDDEEFF11} | -
  | i :   get cfun fail,retry
Modem::GetDeviceService | null | CMbnWinRtHelper::SetMbimCfun | same
  | i :   GetDeviceService() failed. qbi_uuid ={11223344-5566-7788-99AA-BBCCDDEEFF11} | -
  | e :   SetMbimCfun failed, will retry!!!
DeviceService::OpenCommandSession | null | CMbnWinRtHelper::GetMbimCfun | same
  | e :   OpenCommandSession() failed. | - | i :   get cfun fail,retry
DeviceService::OpenCommandSession | null | CMbnWinRtHelper::SetMbimCfun | same
  | i :   OpenCommandSession() failed. | - | e :   SetMbimCfun failed, will retry!!!
# No data at all is a failed query.
CommandResult::ResponseData DataBuffer::Buffer | null | CMbnWinRtHelper::GetMbimCfun | same
  | - | i :   get cfun fail,retry
# Asked only whether there is a modem, nothing is counted.
MobileBroadband::GetDefault | hresult bad_alloc | CMbnWinRtHelper::IsMbimExist | same
  | e :   exception {what} | - | i :   MBIM Device is not exist.

# The account watcher: setting up catches nothing; starting catches what has a message.
AccountWatcher::AccountAdded AccountWatcher::AccountRemoved AccountWatcher::EnumerationCompleted
  | hresult bad_alloc | - | crash
MobileBroadband::CreateAccountWatcher | hresult bad_alloc null | - | crash
AccountWatcher::Start AccountWatcher::Status | hresult | - | crash
AccountWatcher::Start AccountWatcher::Status | bad_alloc
  | CMbnWinRtHelper::StartMobileBroadbandAccountWatcher | unheard
  | i :   exception : std::bad_alloc | - | h : - CMbnWinRtHelper::Init

# The service's host.
StartServiceCtrlDispatcherW | error | - | no_dispatcher
  | i :   N auth Service: Main: StartServiceCtrlDispatcher returned error : 1063
LookUpNtQuerySystemInformation | error | ServiceMain | same
  | e :   Get NtQuerySystemInformation Addr Failed!\x0A | i :   filename: *
NtQuerySystemInformation | error | ServiceMain | same | i :   filename: *
FileTimeToLocalFileTime | error | ServiceMain | same | i :   Date: * | i :   filename: *
FileTimeToSystemTime | error | ServiceMain | same
  | i :   Date: 00-00-0000\x0ATime: 00:00:00\x0A | i :   filename: *
GetModuleFileNameW | error | ServiceMain | same | i :   filename:\x20
GetFileVersionInfoSizeW GetFileVersionInfoW VerQueryValueW HeapAlloc
  | error | ServiceMain | same | i :   dwSessionCount: *
WTSEnumerateSessionsW | error | ServiceMain | same
  | i :   WTSEnumerateSessions failed. GetLastError: 1722
RegisterServiceCtrlHandlerExW | error | ServiceMain | no_status
  | e :   RegisterServiceCtrlHandler returned error | -
RegisterSuspendResumeNotification | error | ServiceMain | unheard
  | e :   RegisterSuspendResumeNotification returned error | h : + RegisterUsbDeviceNotification
RegisterDeviceNotificationW | error | RegisterUsbDeviceNotification | unheard
  | e :   RegisterDeviceNotification error 0x0000000d | -
CreateEventW | error | ServiceMain | no_event | e :   CreateEvent returned error
  | h : + ReportServiceStatus | i :   dwControlsAccepted = 0x81 | h : - ReportServiceStatus | -
# The worker's own event: the worker looks for tasks at intervals, and nobody else runs when
# it is signalled.
CreateEventW | error | CTaskManager::dealTaskThread | same | h : + CTaskManager::getTask
CreateEventW | error | CTaskManager::addTask | same | -
# A process that never needed it, and its successor.
CreateEventW | error | - | unknown
  | i :   \x0D\x0A==================================   NService start *
CreateThread | error | CTaskManager::init | no_worker
  | i :   Create task deal thread failed, errcode(0x8).\x0D\x0A | -
OpenEventLogW | error | - | same | e :   Could not open the Application event log.
  | i :   PBT_APMRESUMEAUTOMATIC \xCF\xB5\xCD\xB3\xBF\xAA\xBB\xFA\xCA\xB1\xBC\xE4 =  ; logonTime = 0
ReadEventLogW | error | - | same
  | i :   not find logon time,because start long long ago , so set a fake time = *
  | i :   -getLastLogTime

# The restart. A name that is lost between its two forms starts nothing again.
OpenSCManagerW | error | CommonUtil::GetServiceName | same | e :   OpenSCManager fail,error code 0x5
  | - | e :   Find service name fail,return false | h : - CommonUtil::RestartService
EnumServicesStatusExW LocalAlloc | error | CommonUtil::GetServiceName | same
  | - | e :   Find service name fail,return false | h : - CommonUtil::RestartService
ShellExecuteExW | error | CommonUtil::RestartService | same
  | i :    RestartService failed.Error = 0x4c7 | -
MultiByteToWideChar | error | CommonUtil::RestartService | no_start | i :   buffer *
WideCharToMultiByte | error | CommonUtil::GetServiceName | no_start | i :   Service Name: \x0A | -
WideCharToMultiByte | error | CommonUtil::RestartService | same | i :   buffer\x20

# The modem's presence: everything that cannot be read counts as absent.
GetAdaptersAddresses | error | CDeviceHelper::IsNuveltaMBIMDevcieExist | same
  | i :   not get adapter,return\x20 | - | i :   MBIM Device is not nuvelta device.
HeapAlloc | error | CDeviceHelper::IsNuveltaMBIMDevcieExist | same
  | e :   GetAdaptersAddresses AF_UNSPEC failed | - | i :   MBIM Device is not nuvelta device.
RegEnumKeyExA RegOpenKeyExA RegQueryValueExA SetupDiOpenClassRegKeyExW
  | error | CDeviceHelper::IsNuveltaMBIMDevcieExist | same
  | i :   not get hardware id,return | - | i :   MBIM Device is not nuvelta device.
WideCharToMultiByte | error | CDeviceHelper::IsNuveltaMBIMDevcieExist | same
  | i :   Adapters Info: *
# Text that cannot be converted is no match: the service is not in the list.
WideCharToMultiByte | error | CMbnWinRtHelper::GetMbimCfun | same
  | i :   module current version not support MA,return | i :   get cfun fail,retry

# A firmware that cannot be read has no texts, and an unknown platform passes; it has no
# FCC structure either.
GetSystemFirmwareTable HeapAlloc | error | CTaskAuthModule::VerifyPlatform | final
  | i :   SMBIOS system project_name =\x20
  | i :   SMBIOS system project_name =  \xA3\xAC replace by family | h : + IsCS24Project
GetSystemFirmwareTable HeapAlloc | error | CTaskAuthModule::VerifyPlatform | final
  | i :   platform_modem_map_size = 55 ;*
  | i :   not in platform list. VerifyPlatform return = true\x20
GetSystemFirmwareTable HeapAlloc | error | CTaskAuthModule::doJob | final | i :   smBiosDataSize:*
GetSystemFirmwareTable HeapAlloc | error | CTaskAuthModule::doJob | final
  | e :   isFccMode = false  , exit | -
SetupDiGetClassDevsW | error | CDeviceHelper::GetAuthDeviceHwid | final
  | i :   SetupDiGetClassDevs failed return INVALID_HANDLE_VALUE ,error code 13 \xA3\xACexit false
  | - | i :   szAuthHwid =\x20 | i :   Get Nuvelta Device HardwareID Faild
  | i :   VerifyPlatform return = false\x20
SetupDiEnumDeviceInfo | error | CDeviceHelper::GetAuthDeviceHwid | final
  | i :   SetupDiEnumDeviceInfo return : 0 ,error code: 13\x20
SetupDiGetDeviceRegistryPropertyW | error | CDeviceHelper::GetAuthDeviceHwid | final
  | i :   GET device Hwid[*
SetupDiGetDeviceRegistryPropertyW | error | CDeviceHelper::GetAuthDeviceHwid | final
  | i :   SetupDiEnumDeviceInfo return : 0 ,error code: 259\x20
WideCharToMultiByte | error | CDeviceHelper::GetAuthDeviceHwid | final | i :   GET device Hwid[*
# A call that has failed leaves its error, which is what the reader logs.
WideCharToMultiByte | error | CommonUtil::ReadDWORDRegValue | same
  | e :   RegOpenKeyEx FAIL ,ERROR code = 1113
# The registry switches: what cannot be read is absent.
RegOpenKeyExW | error | CommonUtil::ReadDWORDRegValue | final
  | e :   RegOpenKeyEx FAIL ,ERROR code = * | - | i :   NOT find reg*
RegQueryValueExW | error | CommonUtil::ReadDWORDRegValue | final
  | e :   RegQueryValueEx FAIL ,ERROR code = * | - | i :   NOT find reg*
HeapAlloc | error | CommonUtil::ReadDWORDRegValue | final | - | i :   NOT find reg*

# The log files. The log lies below the root of the disk, or the retention looks there.
DeleteFileA | error | DeleteFileWhileExceedMaxSizeAndTime | same | e :   DeleteFile *
FindFirstFileA GetVariable | error | DeleteFileWhileExceedMaxSizeAndTime | same | -
FindNextFileA GetVariable | error | DeleteFileWhileExceedMaxSizeAndTime | same
  | i :   dwLogFolderSize: *
FindNextFileA GetVariable | error | DeleteFileWhileExceedMaxSizeAndTime | same | i :   because *
GetVariable | error | DeleteFileWhileExceedMaxSizeAndTime | same
  | i :   check path : \Nuvelta Wireless Inc\MAService\HX2208GW\*
# Texts that are only logged are empty.
WideCharToMultiByte | error | ServiceMain | same | i :   filename:\x20
WideCharToMultiByte | error | ServiceMain | same | i :   [*
WideCharToMultiByte | error | ServiceCtrlHandler | same | i :   Device Arrival. ()
WideCharToMultiByte | error | ServiceCtrlHandler | same | i :   Device Removal. ()
WideCharToMultiByte | error | - | same | i :   find logon time !! *

# A task that cannot be had: its trigger is given up without a word. Of the start's the
# worker shows it, which finds no task; without a worker the platform's thread goes on.
HeapAlloc | error | NService::dealDeviceArrive | unheard | -
HeapAlloc | error | NService::dealQuickBoot | unheard | -
HeapAlloc | error | CMbnWinRtHelper::AccountAddedHandler | unheard | -
HeapAlloc | error | - | unheard | i :   PowerChanged: Event Type = 7 *
HeapAlloc | error | ServiceMain | unheard | i :   \x0ANService::Run leave\x0A
HeapAlloc | error | - | unheard
  | h : + CTaskManager::dealTaskThread | h : + CTaskManager::getTask | h : - CTaskManager::getTask
HeapAlloc | error | - | unheard | h : + CMbnWinRtHelper::AccountEnumHandler

# Calls whose failure shows in no line of its own.
_mkdir ResetEvent StartDetachedThread | error | - | same
RegisterPowerSettingNotification | error | - | unheard
SetEvent | error | - | signal
SetServiceStatus | error | - | report
WaitForSingleObject | error | - | wait

# The answer without the fault is the same failure, or the last of a list, or about something
# that no line is written of, or that is never needed; the modem may have thrown the same.
CreateEventW DeleteFileA FileTimeToLocalFileTime FindNextFileA GetAdaptersAddresses GetVariable
  NtQuerySystemInformation ReadEventLogW RegEnumKeyExA RegOpenKeyExA RegOpenKeyExW
  RegQueryValueExA RegQueryValueExW SetupDiEnumDeviceInfo SetupDiGetDeviceRegistryPropertyW
  WideCharToMultiByte | error | - | same | no trace
CommandSession::SendQueryCommandAsync | hresult | - | same | no trace
CommandResult::ResponseData DataWriter::DetachBuffer MobileBroadband::GetDefault
  | null | - | same | no trace
)";

constexpr std::array<std::string_view, 4> kHows{"error", "null", "hresult", "bad_alloc"};
constexpr std::array<std::string_view, 13> kOutcomes{
    "same",      "final",    "unheard", "crash",  "no_status", "no_event", "no_dispatcher",
    "no_worker", "no_start", "wait",    "signal", "report",    "unknown"};

std::vector<std::string_view> Split(std::string_view text, std::string_view separator) {
  std::vector<std::string_view> parts;
  for (size_t end = 0; end != std::string_view::npos;) {
    end = text.find(separator);
    parts.push_back(text.substr(0, end));
    text.remove_prefix(std::min(text.size(), end + separator.size()));
  }
  return parts;
}

[[noreturn]] void UnknownWord(std::string_view word) {
  throw std::runtime_error(std::string(kTableFile) + ": unknown: " + std::string(word));
}

template <class Word, size_t Count>
Word Find(const std::array<std::string_view, Count>& words, std::string_view word) {
  const auto* const found = std::ranges::find(words, word);
  if (found == words.end()) UnknownWord(word);
  return static_cast<Word>(found - words.begin());
}

std::string Replaced(std::string text, std::string_view what, std::string_view by) {
  const size_t at = text.find(what);
  return at == std::string::npos ? text : text.replace(at, what.size(), by);
}

std::string LineOf(std::string_view text, const Consequence& row) {
  if (text == "-") return "h : - " + std::string(row.scope);
  const bool has_text = row.how == How::kBadAlloc;
  return Replaced(Replaced(std::string(text), "{what}", has_text ? ": std::bad_alloc" : "other"),
                  "\\x20", " ");
}

void AddRows(std::string_view text, std::vector<Consequence>& rows) {
  const std::vector<std::string_view> cells = Split(text, " | ");
  if (cells.size() < 4) UnknownWord(text);
  for (const std::string_view call : Split(cells[0], " ")) {
    if (virtual_notebook::FindCall(call) == nullptr) UnknownWord(call);
    for (const std::string_view how : Split(cells[1], " ")) {
      Consequence row{.call = call, .scope = cells[2] == "-" ? "" : cells[2], .lines = {}};
      row.how = Find<How>(kHows, how);
      row.outcome = Find<Outcome>(kOutcomes, cells[3]);
      row.without_trace = cells.back() == kNoTrace;
      for (size_t i = 4; i < cells.size(); ++i) row.lines.push_back(LineOf(cells[i], row));
      rows.push_back(std::move(row));
    }
  }
}

// The table with a row a line.
std::vector<std::string> Rows() {
  std::vector<std::string> rows;
  for (const std::string_view line : Split(kTable, "\n")) {
    if (line.starts_with("  ")) {
      rows.back().append(line.substr(1));
    } else if (!line.empty() && !line.starts_with('#')) {
      rows.emplace_back(line);
    }
  }
  return rows;
}

}  // namespace

std::span<const Consequence> Consequences() {
  static const std::vector<std::string> rows = Rows();
  static const auto consequences = [] {
    std::vector<Consequence> all;
    for (const std::string& row : rows) AddRows(row, all);
    return all;
  }();
  return consequences;
}

std::string RowText(const Consequence& row) {
  std::string text(row.call);
  text.append(" | ").append(kHows.at(static_cast<size_t>(row.how))).append(" | ");
  text.append(row.scope.empty() ? "-" : row.scope).append(" | ");
  text.append(kOutcomes.at(static_cast<size_t>(row.outcome)));
  for (const std::string& line : row.lines) text += " | " + (line == LineOf("-", row) ? "-" : line);
  return text;
}

}  // namespace nuvelta::test
