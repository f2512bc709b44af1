// The authentication task: decides whether the modem may be used on this machine
// and switches its radio on.
#pragma once

#include <cstdint>
#include <string>

#include "common/ctask.h"

namespace nuvelta {

class CTaskAuthModule final : public CTask {
 public:
  // True when the job reached the functionality level step and did not fail to
  // set it. Leaves *pbRetry alone except where it wants another run (true) or
  // the modem lacks the vendor service (false). An exception of the platform
  // adds 1 to iExceptionTimes and 2 to iRetryTimes.
  bool doJob(bool* pbRetry) override;
  const char* getTaskName() override { return "CTaskAuthModule"; }
  // [fixed] the id that the log's list calls "change USB mode".
  int32_t getTaskTypeId() override { return TASK_TYPE_ID_CHANGE_USB_MODE; }

  // True when the platform is not listed, or listed and its modem is allowed. Defined in
  // verify_platform.cpp.
  static bool VerifyPlatform();

 private:
  static bool IsModemReady(bool* pbRetry);
  static bool IsPlatformApproved();
  bool EnableRadio(bool* pbRetry);
  bool HandleException(bool* pbRetry);

  // In verify_platform.cpp.
  static bool IsSupportPlatform(const std::string& project);
  static bool IsSupportModem(const std::string& project, const char* hwid);
};

}  // namespace nuvelta
