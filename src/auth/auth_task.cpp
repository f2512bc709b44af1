#include "auth/auth_task.h"

#include <type_traits>

#include "auth/systeminfo.h"
#include "common/common_util.h"
#include "common/func_trace.h"
#include "common/logger.h"
#include "common/scope_exit.h"
#include "modem/device_helper.h"
#include "modem/mbn_winrt_helper.h"

namespace nuvelta {

namespace {

constexpr const char* kDoJob = "CTaskAuthModule::doJob";

constexpr int32_t kRadioOn = 1;

static_assert(std::is_trivially_destructible_v<CTaskAuthModule>);

}  // namespace

bool CTaskAuthModule::doJob(bool* pbRetry) {
  const CFuncTrace trace(kDoJob);
  bIsDealing = true;
  const ScopeExit done([this] { bIsDealing = false; });
  if (!IsModemReady(pbRetry)) return false;
  // [fixed] before the registry is read, and whatever it holds.
  LogInfo(kDoJob, "ReadIsDisableVerifyReg return -1");
  if (!CommonUtil::IsDisableVerify() && !IsPlatformApproved()) return false;
  return EnableRadio(pbRetry);
}

bool CTaskAuthModule::IsModemReady(bool* pbRetry) {
  bool present = false;
  CDeviceHelper::IsNuveltaMBIMDevcieExist(present);
  if (!present) {
    *pbRetry = true;
    LogInfo(kDoJob, "MBIM Device is not nuvelta device.");
    return false;
  }
  if (!CMbnWinRtHelper::IsMbimExist()) {
    LogInfo(kDoJob, "MBIM Device is not exist.");
    *pbRetry = true;
    // [fixed] the exit line stands twice on this path.
    CFuncTrace::WriteExit(kDoJob);
    return false;
  }
  return true;
}

// A rejection is final: no retry.
bool CTaskAuthModule::IsPlatformApproved() {
  if (!VerifyPlatform()) {
    LogError(kDoJob, "Invalid Modem in this platform.");
    return false;
  }
  LogInfo(kDoJob, "Valid Modem in this platform.");
  LogInfo(kDoJob, "VerifyPlatform pass");
  // For the log lines that it writes.
  const Systeminfo info;
  if (!Systeminfo::isFccMode()) {
    LogError(kDoJob, "isFccMode = false  , exit");
    return false;
  }
  LogInfo(kDoJob, "isFccMode pass");
  return true;
}

bool CTaskAuthModule::EnableRadio(bool* pbRetry) {
  int32_t cfun = kCfunNotReady;
  bool exceptionRaised = false;
  const bool answered = CMbnWinRtHelper::GetMbimCfun(cfun, exceptionRaised);
  if (exceptionRaised) return HandleException(pbRetry);
  if (!answered) {
    // [fixed] true, unlike after a failed set.
    LogInfo(kDoJob, "get cfun fail,retry");
    *pbRetry = true;
    return true;
  }
  LogInfo(kDoJob, "Current CFUN = %d (4 QUERY_CFUN_0 ;-1 NOT SUPPORT MA)", cfun);
  if (cfun == kCfunNotSupported) {
    LogInfo(kDoJob, "module not support ma,return");
    *pbRetry = false;
    return true;
  }
  if (cfun == kCfunNotReady) {
    LogInfo(kDoJob, "CFUN = %d, mbim not ready ,will retry", cfun);
    *pbRetry = true;
    return true;
  }
  if (cfun == kRadioOn) {
    LogInfo(kDoJob, "CFUN = %d, cfun 1,will do nothing", cfun);
    return true;
  }
  const bool set = CMbnWinRtHelper::SetMbimCfun(exceptionRaised);
  if (exceptionRaised) return HandleException(pbRetry);
  if (set) {
    LogInfo(kDoJob, "SET MBIM FUN SUCCESS!");
    return true;
  }
  // [fixed] false, unlike after a failed query.
  LogError(kDoJob, "SetMbimCfun failed, will retry!!!");
  *pbRetry = true;
  return false;
}

bool CTaskAuthModule::HandleException(bool* pbRetry) {
  LogInfo(kDoJob, "bIsException happend ,will add Exception times and retry");
  *pbRetry = true;
  iExceptionTimes += 1;
  iRetryTimes += 2;
  return true;
}

}  // namespace nuvelta
