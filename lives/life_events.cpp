// What happens in random lives.
#include <array>
#include <string>

#include "lives/life.h"

namespace nuvelta::explore {

using nlohmann::json;

namespace {

// Kinds without a key of their own; the likelier ones stand more than once.
constexpr std::array kPlain{"arrival",         "arrival",       "arrival",
                            "arrival",         "removal",       "modem_arrives",
                            "modem_arrives",   "modem_leaves",  "modem_leaves",
                            "account_added",   "account_added", "account_added",
                            "suspend",         "suspend",       "resume",
                            "resume",          "resume",        "account_added",
                            "account_removed", "logon",         "start",
                            "start",           "stop",          "kill"};

// Gaps between events: at once, within a run, within its pauses, long after.
constexpr std::array kGaps{0.0,  0.0, 0.0, 0.001, 0.005, 0.012, 0.02, 0.03, 0.06,
                           0.15, 0.4, 0.5, 1.0,   2.0,   2.05,  4.1,  9.0,  35.0};

json MakeSwitchEdit(Dice& dice) {
  const char* name = dice.Percent(50) ? "IsDisableVerify" : "SupportVerifyPlatform";
  json event{{"do", "registry_set"}, {"key", kSettingsKey}, {"name", name}};
  if (dice.Percent(35)) {
    event["do"] = "registry_delete";
  } else {
    event["value"] = MakeSwitchValue(dice);
  }
  return event;
}

// Pause, continue, interrogate, shutdown, and one of the service's own.
json MakeControl(Dice& dice) {
  json event{{"do", "control"}, {"number", dice.Of(std::array{2, 3, 4, 5, 200})}};
  if (dice.Percent(50)) event["regardless"] = true;
  return event;
}

json MakeEvent(Dice& dice) {
  switch (dice.Below(12)) {
    case 0:
    case 1: {
      json event = MakeModemChange(dice);
      event["do"] = "modem_changes";
      return event;
    }
    case 2:
      return MakeSwitchEdit(dice);
    case 3:
      switch (dice.Below(4)) {
        case 0:
          return {{"do", "battery"}, {"percent", dice.Between(0, 100)}};
        case 1:
          return {{"do", "session_change"}, {"number", dice.Between(1, 11)}};
        case 2:
          return {{"do", "power_event"}, {"number", dice.Of(std::array{4, 7, 10, 18})}};
        default:
          return MakeControl(dice);
      }
    default:
      return {{"do", dice.Of(kPlain)}};
  }
}

}  // namespace

json MakeEvents(Dice& dice) {
  json events = json::array();
  double at = 0;
  if (dice.Percent(10)) {
    events.push_back({{"do", "arrival"}});
    at = 1;
  }
  events.push_back({{"do", "start"}, {"at", at}});
  for (auto left = dice.Between(0, dice.Percent(20) ? 16 : 7); left > 0; --left) {
    at += dice.Of(kGaps);
    json event = MakeEvent(dice);
    event["at"] = at;
    if (dice.Percent(8)) {
      const int64_t repeat = dice.Between(2, 6);
      const int every_ms = dice.Of(std::array{0, 1, 30, 700});
      event["repeat"] = repeat;
      event["every_ms"] = every_ms;
      at += static_cast<double>((repeat - 1) * every_ms) / 1000.0 + 0.001;
    }
    events.push_back(event);
  }
  return events;
}

void AddHealthyEnd(Dice& dice, json& events) {
  // Behind all that the last event may have begun: a stop, a restart of its own.
  double at = events.back()["at"].get<double>() + 40;
  const auto add = [&](double gap, json event) {
    at += gap;
    event["at"] = at;
    events.push_back(std::move(event));
  };
  add(0, {{"do", "modem_changes"},
          {"radio", dice.Of(std::array{4, 0, 7})},
          {"mbim", true},
          {"hardware_id", "USB\\VID_3A5E&PID_4A10&REV_0318&MI_00"},
          {"device_services", json::array({"sms", "vendor"})},
          {"latency_ms", dice.Of(std::array{0, 20, 1500})},
          {"query", json::array()},
          {"set", json::array()}});
  add(0, {{"do", "start"}});
  // One arrival may be spent on a task that is about to go, another on a service
  // that is restarting itself.
  add(10, {{"do", "modem_arrives"}});
  for (size_t i = 3; i < kHealthyEndEvents; ++i) add(12, {{"do", "arrival"}});
}

}  // namespace nuvelta::explore
