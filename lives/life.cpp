#include "lives/life.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "notebook/model/port_calls.h"
#include "notebook/scenario/scenario_reader.h"

namespace nuvelta::explore {

using nlohmann::json;
using virtual_notebook::PortCall;

namespace {

// What ServiceMain calls until it serves, in that order.
constexpr std::array kStartCalls{"WTSEnumerateSessionsW",
                                 "RegisterServiceCtrlHandlerExW",
                                 "RegisterPowerSettingNotification",
                                 "RegisterSuspendResumeNotification",
                                 "RegisterDeviceNotificationW",
                                 "SetServiceStatus",
                                 "CreateEventW"};

json MakeDelay(const char* call, double late_ms) {
  return {{"call", call}, {"count", "always"}, {"late_ms", late_ms}};
}

json MakeFault(Dice& dice, const PortCall& call) {
  json fault{{"call", call.name}, {"nth", dice.Between(1, dice.Percent(50) ? 3 : 25)}};
  if (dice.Percent(30)) fault["count"] = dice.Between(1, 6);
  // A restart that is refused for ever is tried for ever, without a pause.
  const bool may_last = call.name != "ShellExecuteExW" && call.name != "OpenSCManagerW" &&
                        call.name != "EnumServicesStatusExW" && call.name != "LocalAlloc";
  if (may_last && dice.Percent(10)) fault["count"] = "always";
  if (call.can_be_null && dice.Percent(40)) {
    fault["null"] = true;
  } else if (call.can_throw) {
    if (dice.Percent(30)) fault["bad_alloc"] = true;
  } else if (dice.Percent(30)) {
    fault["error"] = dice.Between(1, 2000);
  }
  return fault;
}

}  // namespace

json MakeFaults(Dice& dice) {
  json faults = json::array();
  for (auto left = dice.Between(1, 3); left > 0; --left) {
    const PortCall& call = dice.Of(virtual_notebook::kPortCalls);
    const auto same_call = [&](const json& fault) { return fault["call"] == call.name; };
    if (std::ranges::none_of(faults, same_call)) faults.push_back(MakeFault(dice, call));
  }
  return faults;
}

json MakeDelays(Dice& dice) {
  json delays = json::array();
  for (auto left = dice.Between(1, 2); left > 0; --left) {
    delays.push_back(MakeDelay(dice.Of(kStartCalls), static_cast<double>(dice.Between(1, 50))));
  }
  return delays;
}

json MakeLife(uint64_t seed, std::optional<double> start_delay_ms) {
  Dice dice(seed);
  json life{{"title", "life " + std::to_string(seed)}, {"seed", seed & 0x7FFFFFFFU}};
  life["notebook"] = MakeNotebook(dice);
  life["events"] = MakeEvents(dice);
  life["rest_within_s"] = dice.Of(std::array{3, 20, 75, 130});
  if (dice.Percent(10)) life["stop_at_end"] = false;
  if (dice.Percent(55)) {
    AddHealthyEnd(dice, life["events"]);
    life["story"] = kHealthyEnd;
  } else if (dice.Percent(70)) {
    life["faults"] = MakeFaults(dice);
  }
  if (dice.Percent(40)) life["delays"] = MakeDelays(dice);
  if (start_delay_ms) {
    life["delays"].push_back(MakeDelay(kStartCalls[seed % kStartCalls.size()], *start_delay_ms));
  }
  return life;
}

virtual_notebook::Scenario ReadLife(const json& life) {
  return virtual_notebook::ReadScenarioText(life.dump(), "life", ".");
}

}  // namespace nuvelta::explore
