#include "support/causes.h"

#include <array>

namespace nuvelta::support {

namespace {

constexpr const char* kNothing = "Nothing.";
constexpr const char* kIfItStays =
    "The service tries again by itself, 30 times at most after a trigger. If it stays so: restart "
    "the notebook, then update the modem's driver and firmware.";

constexpr std::array kCauses{
    CauseInfo{Cause::kSwitchedOn, "switched_on", Verdict::kOn,
              "the service has switched the radio on", kNothing},
    CauseInfo{Cause::kAlreadyOn, "already_on", Verdict::kOn,
              "the modem said that the radio is on already", kNothing},

    CauseInfo{Cause::kAdapterNotExpected, "adapter_not_expected", Verdict::kOffByRule,
              "the first mobile-broadband adapter is not one of the modems of this service",
              "Compare the id with those that the service expects. Another maker's modem has "
              "another service; with two modems only the first one is looked at."},
    CauseInfo{Cause::kModemNotAllowed, "modem_not_allowed", Verdict::kOffByRule,
              "this platform is listed, and its list does not allow this modem",
              "Fit a modem that is approved for this platform."},
    CauseInfo{Cause::kFccStructureMissing, "fcc_structure_missing", Verdict::kOffByRule,
              "the firmware has no FCC structure of the right kind",
              "Update the notebook's firmware, or ask its maker whether this model is approved."},
    CauseInfo{Cause::kFccContentWrong, "fcc_content_wrong", Verdict::kOffByRule,
              "the firmware's FCC structure has another content than FCC mode asks for",
              "Update the notebook's firmware. When the content is as the maker gave it, the "
              "service was built with another marker: install the release for this maker."},

    CauseInfo{Cause::kAdaptersNotRead, "adapters_not_read", Verdict::kOffByFailure,
              "the system had no memory for the list of its network adapters", kIfItStays},
    CauseInfo{Cause::kNoAdapter, "no_adapter", Verdict::kOffByFailure,
              "there is no mobile-broadband adapter",
              "Look for the modem in the device manager: absent, disabled in the firmware's "
              "set-up, in need of a driver, or not fitted."},
    CauseInfo{Cause::kNoInstanceId, "no_instance_id", Verdict::kOffByFailure,
              "the registry does not say which device the mobile-broadband adapter is",
              "Install the modem's driver again."},
    CauseInfo{Cause::kModemNotReachable, "modem_not_reachable", Verdict::kOffByFailure,
              "Windows knows the adapter, but offers no mobile-broadband modem",
              "See that the WWAN AutoConfig service runs and that flight mode is off. After a "
              "start or a resume this can be so for a while."},
    CauseInfo{Cause::kMobileBroadbandFailed, "mobile_broadband_failed", Verdict::kOffByFailure,
              "the mobile-broadband interface of Windows failed when it was asked for a modem",
              "See that the WWAN AutoConfig service runs. Windows Server and editions without "
              "mobile broadband do not have the interface."},
    CauseInfo{Cause::kNoDeviceId, "no_device_id", Verdict::kOffByFailure,
              "this platform is listed, and none of its devices is a modem of the maker",
              "Look for the modem in the device manager; install its driver again."},
    CauseInfo{Cause::kDevicesNotRead, "devices_not_read", Verdict::kOffByFailure,
              "this platform is listed, and the list of its devices could not be read",
              "Restart the notebook."},
    CauseInfo{Cause::kFirmwareNotRead, "firmware_not_read", Verdict::kOffByFailure,
              "the firmware's table could not be read",
              "Restart the notebook. If it stays so, update its firmware."},
    CauseInfo{Cause::kModemVanished, "modem_vanished", Verdict::kOffByFailure,
              "the modem was there, and was gone when the command was to be sent", kIfItStays},
    CauseInfo{Cause::kVendorServiceMissing, "vendor_service_missing", Verdict::kOffByFailure,
              "the modem does not offer the vendor's service through which the radio is set",
              "Update the modem's firmware."},
    CauseInfo{Cause::kVendorServiceRefused, "vendor_service_refused", Verdict::kOffByFailure,
              "Windows did not hand out the vendor's service of the modem", kIfItStays},
    CauseInfo{Cause::kSessionRefused, "session_refused", Verdict::kOffByFailure,
              "the vendor's service opened no session for commands",
              "Look for another program that keeps the modem's service to itself."},
    CauseInfo{Cause::kQueryNotAnswered, "query_not_answered", Verdict::kOffByFailure,
              "the modem did not answer the query within two seconds", kIfItStays},
    CauseInfo{Cause::kQueryFailed, "query_failed", Verdict::kOffByFailure,
              "the query was broken off or ended with an error", kIfItStays},
    CauseInfo{Cause::kQueryRefused, "query_refused", Verdict::kOffByFailure,
              "the modem refused the query with a status code",
              "Look the status code up in the modem's documents, and update its firmware."},
    CauseInfo{Cause::kQueryTooShort, "query_too_short", Verdict::kOffByFailure,
              "the modem's answer was shorter than a level is", "Update the modem's firmware."},
    CauseInfo{Cause::kModemSaysUnsupported, "modem_says_unsupported", Verdict::kOffByFailure,
              "the modem itself says that it does not support the command (level -1)",
              "Update the modem's firmware."},
    CauseInfo{Cause::kModemNotReady, "modem_not_ready", Verdict::kOffByFailure,
              "the modem said that it is not ready (level -2)", kIfItStays},
    CauseInfo{Cause::kWouldSwitchOn, "would_switch_on", Verdict::kOffByFailure,
              "the radio is off though nothing forbids it: the service would switch it on at its "
              "next trigger",
              "See that the service runs, and restart it: a start is a trigger. If the radio "
              "stays off, the service's log says how the set command ended."},
    CauseInfo{Cause::kSetNotAnswered, "set_not_answered", Verdict::kOffByFailure,
              "the modem did not answer the set command within two seconds; whether it has "
              "obeyed is not known",
              kIfItStays},
    CauseInfo{Cause::kSetFailed, "set_failed", Verdict::kOffByFailure,
              "the set command was broken off or ended with an error", kIfItStays},
    CauseInfo{Cause::kSetRefused, "set_refused", Verdict::kOffByFailure,
              "the modem refused the set command with a status code",
              "Look the status code up in the modem's documents, and update its firmware."},
    CauseInfo{Cause::kPlatformException, "platform_exception", Verdict::kOffByFailure,
              "a call of the mobile-broadband interface failed during the commands",
              "After the fourth time the service restarts itself. If that does not help: restart "
              "the notebook, then update the modem's driver."},
    CauseInfo{Cause::kServiceNotStarted, "service_not_started", Verdict::kOffByFailure,
              "the process ended before the service ran",
              "It must be started by the service manager, not from a console. Look for the reason "
              "in the System event log, and install the service again."},
    CauseInfo{Cause::kNoWorker, "no_worker", Verdict::kOffByFailure,
              "the service could not make the thread that does its work",
              "Restart the service when the system has memory to spare."},

    CauseInfo{Cause::kNotAsked, "not_asked", Verdict::kUnknown,
              "nothing forbids the radio, and the modem was not asked whether it is on",
              "Run the doctor without --no-query."},
    CauseInfo{Cause::kLogSwitchedOff, "log_switched_off", Verdict::kUnknown,
              "the log is empty: as a rule it is switched off in the registry",
              "Set IsMAServiceLog to 1 below HKLM\\SOFTWARE\\Nuvelta Wireless Inc\\Logs, or delete "
              "it, and restart the service. The doctor command needs no log."},
    CauseInfo{Cause::kNoRun, "no_run", Verdict::kUnknown,
              "the log shows no run of the service's task",
              "Ask for the other parts of the log; a later one may hold the run."},
    CauseInfo{Cause::kRunUnfinished, "run_unfinished", Verdict::kUnknown,
              "the log ends in the middle of the first run",
              "Read the log again in a few seconds. If it ends at the same line, the service hangs "
              "in the call that follows it or was ended there."},
    CauseInfo{Cause::kUnexplained, "unexplained", Verdict::kUnknown,
              "the run ended in a way that this program does not know",
              "The log may be of another version of the service, or damaged."},
};

}  // namespace

std::span<const CauseInfo> Causes() { return kCauses; }

const CauseInfo& InfoOf(Cause cause) { return kCauses[static_cast<size_t>(cause)]; }

const char* NameOf(Verdict verdict) {
  switch (verdict) {
    case Verdict::kOn:
      return "radio on";
    case Verdict::kOffByRule:
      return "radio off by rule";
    case Verdict::kOffByFailure:
      return "radio off by failure";
    case Verdict::kUnknown:
      break;
  }
  return "radio unknown";
}

const char* IdOf(Verdict verdict) {
  switch (verdict) {
    case Verdict::kOn:
      return "on";
    case Verdict::kOffByRule:
      return "off_by_rule";
    case Verdict::kOffByFailure:
      return "off_by_failure";
    case Verdict::kUnknown:
      break;
  }
  return "unknown";
}

}  // namespace nuvelta::support
