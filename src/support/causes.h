// Why a radio is on or off: a closed list. docs/support.md describes each for support; a
// test holds the two together.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace nuvelta::support {

enum class Verdict : uint8_t {
  kOn,
  kOffByRule,     // the service saw all it needed, and the rules say no
  kOffByFailure,  // something was missing or broke
  kUnknown,
};

enum class Cause : uint8_t {
  kSwitchedOn,
  kAlreadyOn,

  kAdapterNotExpected,
  kModemNotAllowed,
  kFccStructureMissing,
  kFccContentWrong,

  kAdaptersNotRead,
  kNoAdapter,
  kNoInstanceId,
  kModemNotReachable,
  kMobileBroadbandFailed,
  kNoDeviceId,
  kDevicesNotRead,
  kFirmwareNotRead,
  kModemVanished,
  kVendorServiceMissing,
  kVendorServiceRefused,
  kSessionRefused,
  kQueryNotAnswered,
  kQueryFailed,
  kQueryRefused,
  kQueryTooShort,
  kModemSaysUnsupported,
  kModemNotReady,
  kWouldSwitchOn,
  kSetNotAnswered,
  kSetFailed,
  kSetRefused,
  kPlatformException,
  kServiceNotStarted,
  kNoWorker,

  kNotAsked,
  kLogSwitchedOff,
  kNoRun,
  kRunUnfinished,
  kUnexplained,
};

struct CauseInfo {
  Cause cause{};
  const char* id = nullptr;  // as printed and in JSON: never changes its meaning
  Verdict verdict{};
  const char* reason = nullptr;  // one sentence for the engineer
  const char* advice = nullptr;  // what to do about it
};

// In the order of `Cause`.
std::span<const CauseInfo> Causes();
const CauseInfo& InfoOf(Cause cause);

// "radio on", "radio off by rule" and so on.
const char* NameOf(Verdict verdict);
// "on", "off_by_rule" and so on, as in JSON.
const char* IdOf(Verdict verdict);

}  // namespace nuvelta::support
