// What each line of the log means. The texts are those that the service writes; a line
// that is none of them is unknown.
#pragma once

#include <cstdint>
#include <string_view>

namespace nuvelta::support {

enum class LineKind : uint8_t {
  kUnknown,  // no line of the service
  kOther,    // one that tells nothing about the radio
  kLeave,    // the end of a trace scope

  // The process and the service in it.
  kProcessBegins,
  kBuilt,    // rest: date and time of the compilation
  kVersion,  // rest: "1.0.0.1"
  kRunLoopBegins,
  kServiceEnds,
  kDispatcherRefused,  // rest: the error
  kHandlerRefused,
  kArrivalsNotHeard,  // rest: the error
  kResumesNotHeard,
  kNoStopEvent,
  kNoWorker,  // rest: the error
  kStopAsked,

  // What makes a task.
  kEnterArrival,
  kEnterAccount,
  kDeviceArrives,  // rest: the name and a bracket
  kDeviceLeaves,
  kSuspends,     // rest: the time
  kSleepResume,  // rest: seconds from the last logon to the suspend
  kQuickBoot,
  kEventLogNotRead,
  kLogon,
  kTaskMade,

  // The worker and its task.
  kRunBegins,
  kRunEnds,  // rest: the time and more
  kRetry,    // rest: the runs left
  kGiveUp,
  kRestartBegins,
  kRestartAsked,
  kRestartFailed,  // rest: the error
  kNoServiceName,

  // The modem's presence.
  kAdaptersNotRead,
  kAdapter,  // rest: name, description and friendly name
  kOperStatus,
  kNoAdapter,
  kInstanceId,
  kNoInstanceId,
  kMbimId,
  kNotExpected,
  kExpected,
  kNotThere,
  kEnterExist,
  kNotReachable,

  // The verification switches.
  kSwitchesBegin,
  kOldSwitchAbsent,
  kSwitchValue,  // rest: the value
  kSwitchOffBy0,
  kSwitchOffBy1,

  // The platform.
  kProject,  // rest: the name, and more when the family replaced it
  kNewerPlatform,
  kBoardProduct,  // rest: the machine type
  kLookUp,
  kNotListed,
  kDevicesNotRead,  // rest: the error
  kDeviceId,        // rest: the modem's id, or nothing
  kNoDeviceId,
  kNotAllowed,
  kAllowed,

  // The FCC mode.
  kFirmwareSize,  // rest: the three sizes
  kFccContent,    // rest: content and length
  kFccMode,
  kNoFccMode,

  // The commands.
  kEnterQuery,
  kEnterSet,
  kNoModem,
  kVendorService,
  kNoVendorService,
  kServiceRefused,
  kSessionRefused,
  kQueryBegins,  // before it is sent
  kQuerySent,
  kSetBegins,
  kSetSent,
  kAsyncState,  // rest: its name
  kStatusCode,  // rest: in hexadecimal with "0x", or decimal
  kAnswer,      // rest: the level
  kException,   // rest: what it says
  kOtherException,
  kSetAnswered,
  kQueryFailed,
  kSaysUnsupported,
  kNotReady,
  kAlreadyOn,
  kSetSucceeded,
  kSetFailed,
  kRaised,
};

struct LineMeaning {
  LineKind kind = LineKind::kUnknown;
  std::string_view rest{};  // behind the text that is always the same
};

// The meaning of a record's text, as LogLine has it.
LineMeaning MeaningOf(std::string_view text);
// The same of the message alone, without its tag; trace scopes are no messages.
LineMeaning MeaningOfMessage(std::string_view message);
// The text of a message of that kind, without what differs; empty for other kinds.
std::string_view TextOf(LineKind kind);

}  // namespace nuvelta::support
