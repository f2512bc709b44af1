#include "support/diagnosis.h"

#include <algorithm>

#include "auth/platform_table.h"

namespace nuvelta::support {

namespace {

using enum StepState;

constexpr const char* kLogSwitch = "IsMAServiceLog";
constexpr const char* kOldSwitch = "SupportVerifyPlatform";
constexpr int32_t kRadioIsOn = 1;

StepState GoodIf(bool good) { return good ? kGood : kBad; }

StepState StateOf(const ServiceFacts& service) {
  if (service.error == platform::kErrorServiceDoesNotExist) return kBad;
  if (service.error != 0) return kNotSeen;
  return GoodIf(service.process.dwCurrentState == platform::kServiceRunning);
}

StepState StateOf(const AdapterListFacts& network) {
  if (std::ranges::any_of(network.adapters, &AdapterFacts::examined)) {
    if (network.instance_id.empty() && network.class_error != 0) return kNotSeen;
    return GoodIf(network.expected);
  }
  return kBad;
}

StepState StateOf(const std::vector<SwitchFacts>& switches) {
  StepState state = kGood;
  for (const SwitchFacts& facts : switches) {
    if (SwitchesChecksOff(facts) || (facts.name == kLogSwitch && facts.read == 0)) return kWarning;
    if (facts.error != 0 && facts.error != platform::kErrorFileNotFound) state = kNotSeen;
  }
  return state;
}

StepState PlatformState(const Diagnosis& all) {
  if (!all.firmware.listed) return all.firmware.has_table ? kGood : kNotSeen;
  if (all.devices.id.empty() && all.devices.error != 0) return kNotSeen;
  return GoodIf(IsAllowedModem(all.firmware.key, all.devices.id));
}

StepState ModemState(const ModemFacts& modem) {
  if (modem.error != 0) return kNotSeen;
  return GoodIf(modem.present && modem.vendor_service);
}

StepState QueryState(const ModemFacts& modem) {
  if (!modem.asked) return kNotSeen;
  return GoodIf(modem.level == kRadioIsOn);
}

}  // namespace

bool SwitchesChecksOff(const SwitchFacts& facts) {
  if (facts.name == kLogSwitch) return false;
  return facts.read == (facts.name == kOldSwitch ? 0 : 1);
}

std::string MeaningOf(const SwitchFacts& facts) {
  if (facts.name == kLogSwitch) {
    return facts.read == -1 || facts.read == 1 ? "the log is written" : "the log stays EMPTY";
  }
  return SwitchesChecksOff(facts) ? "platform and FCC mode are NOT checked"
                                  : "switches no check off";
}

StepStates StatesOf(const Diagnosis& all) {
  const bool needed = all.firmware.listed;
  return {.service = StateOf(all.service),
          .log_folder = all.log_folder.error == 0 ? kTold : kNotSeen,
          .switches = StateOf(all.switches),
          .firmware = all.firmware.has_table ? kTold : kNotSeen,
          .platform = PlatformState(all),
          .fcc_mode = all.firmware.has_table ? GoodIf(all.fcc.declared) : kNotSeen,
          .adapters = StateOf(all.network),
          .devices = all.devices.error != 0 ? kNotSeen
                     : needed               ? GoodIf(!all.devices.id.empty())
                                            : kTold,
          .modem = ModemState(all.modem),
          .query = QueryState(all.modem)};
}

}  // namespace nuvelta::support
