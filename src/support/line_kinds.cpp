#include "support/line_kinds.h"

#include <algorithm>
#include <array>

#include "support/text_index.h"

namespace nuvelta::support {

namespace {

using enum LineKind;
using Text = KnownText;

// In the order in which a healthy start writes them; what fails behind it.
constexpr std::array kTexts{
    Text{"\r\n==================================   NService start *", kProcessBegins},
    Text{"N auth Service: Main: Entry"},
    Text{"build at *", kBuilt},
    Text{"N auth Service: Main: StartServiceCtrlDispatcher returned error : *", kDispatcherRefused},
    Text{"N auth Monitor Service: Main: Exit"},
    Text{"boot time (ms) == *"},
    Text{"Date: *"},
    Text{"Get NtQuerySystemInformation Addr Failed!\n"},
    Text{"filename: *"},
    Text{"verion: *", kVersion},
    Text{"dwSessionCount: *"},
    Text{"WTSEnumerateSessions failed. GetLastError: *"},
    Text{"[#]SessionNumber is: *"},
    Text{"RegisterServiceCtrlHandler returned error", kHandlerRefused},
    Text{"RegisterSuspendResumeNotification returned error", kResumesNotHeard},
    Text{"RegisterDeviceNotification error *", kArrivalsNotHeard},
    Text{"CreateEvent returned error", kNoStopEvent},
    Text{"dwControlsAccepted = *"},
    Text{"NService::Run entry", kRunLoopBegins},
    Text{"\nNService::Run leave\n"},
    Text{"\r\n==================================   NService exit *", kServiceEnds},

    Text{"check path : *"},
    Text{"add log file[#] :diff[*"},
    Text{"dwLogFolderSize: *"},
    Text{"because dwLogFolderSize: *"},
    Text{"because item.time_diff[*"},
    Text{"DeleteFile *"},

    Text{"CtrlCode = *"},
    Text{"SERVICE_CONTROL_STOP", kStopAsked},
    Text{"SERVICE_CONTROL_STOP g_pNService->stop(); exit"},
    Text{"SERVICE_CONTROL_PAUSE"},
    Text{"SERVICE_CONTROL_CONTINUE"},
    Text{"SERVICE_CONTROL_POWEREVENT"},
    Text{"SERVICE_CONTROL_SESSIONCHANGE :: WTS_SESSION_LOGON ", kLogon},
    Text{"SERVICE_CONTROL_SESSIONCHANGE :: *"},
    Text{"pPowerBroadcastSetting->PowerSetting *"},
    Text{"ULONG32  tmp = *"},
    Text{"Device Arrival. (*", kDeviceArrives},
    Text{"Device Removal. (*", kDeviceLeaves},

    Text{"PowerChanged: Event Type = *"},
    Text{"PBT_APMSUSPEND g_szSuspendTime = *", kSuspends},
    Text{"PBT_APMRESUMEAUTOMATIC is sleep or   Hibernate ,then resume; "
         "g_suspendTime_t - logonTime = *",
         kSleepResume},
    Text{"PBT_APMRESUMEAUTOMATIC is quick boot ; g_suspendTime_t - logonTime = *", kQuickBoot},
    Text{"PBT_APMRESUMEAUTOMATIC *"},
    Text{"+getLastLogTime"},
    Text{"-getLastLogTime"},
    Text{"Could not open the Application event log.", kEventLogNotRead},
    Text{"dwRead = *"},
    Text{"find logon time !! *"},
    Text{"not find logon time,because start long long ago , so set a fake time = *"},

    Text{"CTaskFactory createTask TASK_TYPE_AUTH", kTaskMade},
    Text{"taskElement.iPriority = *"},
    Text{"find equel priority task Element iPriority = *"},
    Text{"find the same task ID, and the retry times(*"},
    Text{"the same task type id(*"},
    Text{"there are not exist iPriority = *"},
    Text{"find taskElement.iPriority = *"},
    Text{"find taskElement.type = *"},
    Text{"after  front list size = *"},
    Text{"find the same task,will delete the task *"},
    Text{"after  delete task list size = *"},
    Text{"\r\n================= print task list *"},
    Text{"[#]:iPriority *"},
    Text{"[#]: clean not dealing task iPriority *"},
    Text{"[#]: do not clean dealing task iPriority *"},
    Text{"Create task deal thread failed, errcode(*", kNoWorker},
    Text{"dealTaskThread exit"},
    Text{"\r\n\r\n Deal Task CTaskAuthModule Cast Time *", kRunEnds},
    Text{"\r\n\r\n retry deal task : CTaskAuthModule ,retry times(*", kRetry},
    Text{"\r\n\r\n deal task : CTaskAuthModule ,retry times(*", kGiveUp},
    Text{"CommonUtil::RestartService();", kRestartBegins},
    Text{"OpenSCManager fail,error code *"},
    Text{"Service Name: *"},
    Text{"buffer *"},
    Text{" RestartService success.", kRestartAsked},
    Text{" RestartService failed.Error = *", kRestartFailed},
    Text{"Find service name fail,return false", kNoServiceName},

    Text{"event add token = *"},
    Text{"event remove token = *"},
    Text{"event enum token = *"},
    Text{"Watcher is already started."},
    Text{"Watcher is started successfully."},

    Text{"GetAdaptersAddresses AF_UNSPEC failed", kAdaptersNotRead},
    Text{"Adapters Info: adapter name = *", kAdapter},
    Text{"mbim oper status = *", kOperStatus},
    Text{"not get adapter,return ", kNoAdapter},
    Text{"Get Instance Id *", kInstanceId},
    Text{"not get hardware id,return", kNoInstanceId},
    Text{"szMbimHwid = *", kMbimId},
    Text{"not find Expected mbim hwid (*", kNotExpected},
    Text{"find MBIM device : *"},
    Text{"IsNuveltaMBIMDevcieExist *", kExpected},
    Text{"MBIM Device is not nuvelta device.", kNotThere},
    Text{"MBIM Device is not exist.", kNotReachable},

    Text{"ReadIsDisableVerifyReg return -1", kSwitchesBegin},
    Text{"NOT find reg REG_KEY_NAME_DISABLE_VERIFY_OLD ", kOldSwitchAbsent},
    Text{"NOT find reg REG_KEY_NAME_DISABLE_VERIFY "},
    Text{"NOT find reg,return true"},
    Text{"RegQueryValueEx success, ret = *", kSwitchValue},
    Text{"RegQueryValueEx success,but dwType ==  REG_DWORD *"},
    Text{"RegOpenKeyEx FAIL ,ERROR code = *"},
    Text{"RegQueryValueEx FAIL ,ERROR code = *"},
    Text{"find reg value is 0,return true", kSwitchOffBy0},
    Text{"find reg value is 1,return true", kSwitchOffBy1},

    Text{"bios_data->SMBIOSMajorVersion = *"},
    Text{"manufacturer_ = *"},
    Text{"productname_  = *"},
    Text{"serialnumber_ = *"},
    Text{"project_name_ = *"},
    Text{"sku_\t\t= *"},
    Text{"family_\t= *"},
    Text{"processor_manufacturer_= *"},
    Text{"processor Type = *"},
    Text{"processor Family = *"},
    Text{"processor Manufacturer = *"},
    Text{"baseboard_information->Header.*"},
    Text{"[#]baseboard_product_  = *", kBoardProduct},
    Text{"[#]baseboard_*"},

    Text{"SMBIOS system project_name = *", kProject},
    Text{"CS25 project", kNewerPlatform},
    Text{"platform_modem_map_size = *", kLookUp},
    Text{"not in platform list. VerifyPlatform return = true ", kNotListed},
    Text{"SetupDiGetClassDevs failed return INVALID_HANDLE_VALUE ,error code *", kDevicesNotRead},
    Text{"SetupDiEnumDeviceInfo return : *"},
    Text{"GET device Hwid[#] : *"},
    Text{"do not find auth hwid ,return false"},
    Text{"find auth hwid : *"},
    Text{"szAuthHwid = *", kDeviceId},
    Text{"Get Nuvelta Device HardwareID Faild", kNoDeviceId},
    Text{"SMBIOS system version = *"},
    Text{"VerifyPlatform return = true "},
    Text{"VerifyPlatform return = false "},
    Text{"Invalid Modem in this platform.", kNotAllowed},
    Text{"Valid Modem in this platform.", kAllowed},
    Text{"VerifyPlatform pass"},

    Text{"smBiosDataSize:*", kFirmwareSize},
    Text{"szoembuf string_buf:*", kFccContent},
    Text{"Authentica  TRUE"},
    Text{"isFccMode pass", kFccMode},
    Text{"isFccMode = false  , exit", kNoFccMode},

    Text{"+Get MobileBroadbandModem"},
    Text{"-Get MobileBroadbandModem"},
    Text{"MBIM Modem is not exist!", kNoModem},
    Text{"device sevice: *"},
    Text{"find service : *", kVendorService},
    Text{"module current version not support MA,return", kNoVendorService},
    Text{"+Get GetDeviceService"},
    Text{"-Get GetDeviceService"},
    Text{"GetDeviceService() failed. *", kServiceRefused},
    Text{"+OpenCommandSession"},
    Text{"-OpenCommandSession"},
    Text{"OpenCommandSession() failed.", kSessionRefused},
    Text{"device_service_session:*"},
    Text{"+SendQueryCommandAsync", kQueryBegins},
    Text{"-SendQueryCommandAsync", kQuerySent},
    Text{"set cfun value: *"},
    Text{"+SendSetCommandAsync", kSetBegins},
    Text{"-SendSetCommandAsync", kSetSent},
    Text{"async_state = *", kAsyncState},
    Text{"result status code = *", kStatusCode},
    Text{"query command complete. cfun mode = *", kAnswer},
    Text{"exception : *", kException},
    Text{"exception other", kOtherException},
    Text{"set cfun successful.", kSetAnswered},
    Text{"get cfun fail,retry", kQueryFailed},
    Text{"Current CFUN = *"},
    Text{"module not support ma,return", kSaysUnsupported},
    Text{"CFUN = -2, mbim not ready ,will retry", kNotReady},
    Text{"CFUN = 1, cfun 1,will do nothing", kAlreadyOn},
    Text{"SET MBIM FUN SUCCESS!", kSetSucceeded},
    Text{"SetMbimCfun failed, will retry!!!", kSetFailed},
    Text{"bIsException happend ,will add Exception times and retry", kRaised},
};

constexpr std::array kScopes{
    Text{"CDeviceHelper::GetAuthDeviceHwid"},
    Text{"CDeviceHelper::IsNuveltaMBIMDevcieExist"},
    Text{"CMbnWinRtHelper::AccountAddedHandler", kEnterAccount},
    Text{"CMbnWinRtHelper::AccountEnumHandler"},
    Text{"CMbnWinRtHelper::AccountRemovedHandler"},
    Text{"CMbnWinRtHelper::GetMbimCfun", kEnterQuery},
    Text{"CMbnWinRtHelper::Init"},
    Text{"CMbnWinRtHelper::InitMobileBroadbandAccountWatcher"},
    Text{"CMbnWinRtHelper::IsMbimExist", kEnterExist},
    Text{"CMbnWinRtHelper::SetMbimCfun", kEnterSet},
    Text{"CMbnWinRtHelper::StartMobileBroadbandAccountWatcher"},
    Text{"CTaskAuthModule::IsSupportModem"},
    Text{"CTaskAuthModule::VerifyPlatform"},
    Text{"CTaskAuthModule::doJob", kRunBegins},
    Text{"CTaskFactory::createTask"},
    Text{"CTaskManager::CTaskManager"},
    Text{"CTaskManager::GetTaskManagerInstance"},
    Text{"CTaskManager::addTask"},
    Text{"CTaskManager::cleanNotDealTasks"},
    Text{"CTaskManager::dealTaskThread"},
    Text{"CTaskManager::exit"},
    Text{"CTaskManager::getTask"},
    Text{"CTaskManager::init"},
    Text{"CTaskManager::popTask"},
    Text{"CTaskManager::printTaskList"},
    Text{"CTaskManager::retry"},
    Text{"CommonUtil::GetServiceName"},
    Text{"CommonUtil::IsDisableVerify"},
    Text{"CommonUtil::IsEnableServiceLog"},
    Text{"CommonUtil::ReadDWORDRegValue"},
    Text{"CommonUtil::RestartService"},
    Text{"DeleteFileWhileExceedMaxSizeAndTime"},
    Text{"IsCS24Project"},
    Text{"NService::dealDeviceArrive", kEnterArrival},
    Text{"NService::dealQuickBoot"},
    Text{"NService::stop"},
    Text{"RegisterUsbDeviceNotification"},
    Text{"ReportServiceStatus"},
    Text{"ServiceCtrlHandler"},
    Text{"ServiceMain"},
};

}  // namespace

LineMeaning MeaningOfMessage(std::string_view message) {
  static const TextIndex texts(kTexts);
  return texts.Find(message);
}

std::string_view TextOf(LineKind kind) {
  const auto* const found = std::ranges::find(kTexts, kind, &KnownText::kind);
  if (found == kTexts.end()) return {};
  return found->text.substr(0, found->text.find('*'));
}

LineMeaning MeaningOf(std::string_view text) {
  static const TextIndex scopes(kScopes);
  constexpr size_t kTag = 6;  // "i :   ", "h : + "
  if (text.size() < kTag) return {};
  const std::string_view tag = text.substr(1, kTag - 1);
  switch (text.front()) {
    case 'h': {
      const bool enters = tag == " : + ";
      if (!enters && tag != " : - ") return {};
      LineMeaning meaning = scopes.Find(text.substr(kTag));
      if (!enters && meaning.kind != kUnknown) meaning.kind = kLeave;
      meaning.rest = text.substr(kTag);
      return meaning;
    }
    case 'e':
    case 'i':
    case 'w':
      return tag == " :   " ? MeaningOfMessage(text.substr(kTag)) : LineMeaning();
    default:
      return {};
  }
}

}  // namespace nuvelta::support
