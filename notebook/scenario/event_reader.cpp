#include <algorithm>
#include <array>
#include <charconv>
#include <limits>

#include "notebook/scenario/scenario_parts.h"
#include "notebook/scenario/scenario_text.h"

namespace nuvelta::virtual_notebook {

namespace {

using Keys = std::span<const std::string_view>;
using Kind = Action::Kind;

constexpr std::array<std::string_view, 4> kCommonKeys{"at", "do", "repeat", "every_ms"};
constexpr std::array<std::string_view, 3> kControlKeys{"number", "event_type", "regardless"};
constexpr std::array<std::string_view, 1> kNameKeys{"name"};
constexpr std::array<std::string_view, 7> kModemKeys{
    "radio", "mbim", "hardware_id", "device_services", "latency_ms", "query", "set"};
constexpr std::array<std::string_view, 1> kNumberKeys{"number"};
constexpr std::array<std::string_view, 1> kBatteryKeys{"percent"};
constexpr std::array<std::string_view, 2> kSettingKeys{"guid", "value"};
constexpr std::array<std::string_view, 3> kRegistrySetKeys{"key", "name", "value"};
constexpr std::array<std::string_view, 2> kRegistryDeleteKeys{"key", "name"};
constexpr std::array<std::string_view, 5> kRecordKeys{"source", "type", "event_id", "category",
                                                      "raw_hex"};

void ReadNothing(const JsonObject& /*object*/, Action& /*action*/) {}

void ReadControl(const JsonObject& object, Action& action) {
  action.number = static_cast<uint32_t>(object.Need("number").Whole(1, 255));
  if (const auto type = object.Find("event_type")) action.event_type = type->Code();
  object.Read("regardless", action.regardless);
}

void ReadInterface(const JsonObject& object, Action& action) {
  action.text =
      "\\\\?\\PCI#VEN_8086&DEV_15FB#3&11583659&0&FE#{cac88484-7515-4c03-82e6-71a87abac361}";
  object.Read("name", action.text);
}

template <class Value, class ReadValue>
void ReadChange(const JsonObject& object, std::string_view key, std::optional<Value>& out,
                ReadValue read) {
  if (const auto value = object.Find(key)) out = read(*value);
}

void ReadModemChange(const JsonObject& object, Action& action) {
  if (std::ranges::none_of(kModemKeys, [&](auto key) { return object.Has(key); })) {
    object.Where().Refuse("changes nothing", "at least one of " + QuotedList(kModemKeys));
  }
  Action::ModemChange& modem = action.modem;
  ReadChange(object, "radio", modem.radio, [](const JsonCursor& at) {
    return static_cast<int32_t>(
        at.Whole(std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max()));
  });
  ReadChange(object, "mbim", modem.mbim, [](const JsonCursor& at) { return at.Bool(); });
  ReadChange(object, "hardware_id", modem.hardware_id,
             [](const JsonCursor& at) { return at.Text(); });
  ReadChange(object, "device_services", modem.device_services, ReadDeviceServices);
  ReadChange(object, "latency_ms", modem.latency,
             [](const JsonCursor& at) { return at.Milliseconds(kLongestPauseMs); });
  ReadChange(object, "query", modem.query, ReadAnswers);
  ReadChange(object, "set", modem.set, ReadAnswers);
}

void ReadPowerEvent(const JsonObject& object, Action& action) {
  action.number = static_cast<uint32_t>(object.Need("number").Whole(0, 0xFFFF));
}

void ReadSessionChange(const JsonObject& object, Action& action) {
  action.number = static_cast<uint32_t>(object.Need("number").Whole(1, 11));
}

void ReadBattery(const JsonObject& object, Action& action) {
  action.number = static_cast<uint32_t>(object.Need("percent").Whole(0, 100));
}

void ReadPowerSetting(const JsonObject& object, Action& action) {
  action.guid = object.Need("guid").Guid();
  if (const auto value = object.Find("value")) action.number = value->Code();
}

void ReadRegistryDelete(const JsonObject& object, Action& action) {
  const JsonCursor key = object.Need("key");
  action.text = key.Text();
  CheckRegistryKey(key, action.text);
  action.value_name = object.Need("name").Text();
}

void ReadRegistrySet(const JsonObject& object, Action& action) {
  ReadRegistryDelete(object, action);
  action.value = ReadRegistryValue(object.Need("value"));
}

void ReadEventRecord(const JsonObject& object, Action& action) {
  ReadRecordMembers(object, action.record);
}

struct EventForm {
  Kind kind;
  Keys keys;  // beside the common ones
  void (*read)(const JsonObject& object, Action& action);
};

constexpr std::array kForms{
    Word{"start", EventForm{Kind::kStart, {}, ReadNothing}},
    Word{"stop", EventForm{Kind::kStop, {}, ReadNothing}},
    Word{"kill", EventForm{Kind::kKill, {}, ReadNothing}},
    Word{"control", EventForm{Kind::kControl, kControlKeys, ReadControl}},
    Word{"arrival", EventForm{Kind::kArrival, kNameKeys, ReadInterface}},
    Word{"removal", EventForm{Kind::kRemoval, kNameKeys, ReadInterface}},
    Word{"modem_arrives", EventForm{Kind::kModemArrives, {}, ReadNothing}},
    Word{"modem_leaves", EventForm{Kind::kModemLeaves, {}, ReadNothing}},
    Word{"modem_changes", EventForm{Kind::kModemChanges, kModemKeys, ReadModemChange}},
    Word{"account_added", EventForm{Kind::kAccountAdded, {}, ReadNothing}},
    Word{"account_removed", EventForm{Kind::kAccountRemoved, {}, ReadNothing}},
    Word{"suspend", EventForm{Kind::kSuspend, {}, ReadNothing}},
    Word{"resume", EventForm{Kind::kResume, {}, ReadNothing}},
    Word{"power_event", EventForm{Kind::kPowerEvent, kNumberKeys, ReadPowerEvent}},
    Word{"session_change", EventForm{Kind::kSessionChange, kNumberKeys, ReadSessionChange}},
    Word{"logon", EventForm{Kind::kLogon, {}, ReadNothing}},
    Word{"battery", EventForm{Kind::kBattery, kBatteryKeys, ReadBattery}},
    Word{"power_setting", EventForm{Kind::kPowerSetting, kSettingKeys, ReadPowerSetting}},
    Word{"registry_set", EventForm{Kind::kRegistrySet, kRegistrySetKeys, ReadRegistrySet}},
    Word{"registry_delete",
         EventForm{Kind::kRegistryDelete, kRegistryDeleteKeys, ReadRegistryDelete}},
    Word{"event_record", EventForm{Kind::kEventRecord, kRecordKeys, ReadEventRecord}},
};

std::vector<std::string_view> CommonAnd(Keys keys) {
  std::vector<std::string_view> all(kCommonKeys.begin(), kCommonKeys.end());
  all.insert(all.end(), keys.begin(), keys.end());
  return all;
}

std::string SecondsText(Duration time) {
  std::array<char, 32> text{};
  const auto end = std::to_chars(text.begin(), text.end(), static_cast<double>(time.count()) / 1e9);
  return {text.data(), end.ptr};
}

// When the event happens for the last time.
Duration LastTime(const Event& event) { return event.at + (event.repeat - 1) * event.every; }

Event ReadEvent(const JsonCursor& at, Duration earliest) {
  // Without "do" it is not known which other keys belong here; the common ones
  // are the likeliest to have been meant.
  const bool has_kind = at.IsObject() && at.Value().contains("do");
  const EventForm form =
      has_kind ? at.At("do").Choice(kForms) : EventForm{Kind::kStart, {}, ReadNothing};
  const JsonObject object(at, CommonAnd(form.keys));
  Event event;
  event.at = earliest;
  event.action.kind = form.kind;
  object.Need("do");
  if (const auto time = object.Find("at")) {
    event.at = time->Seconds(0, kLongestStory);
    if (event.at < earliest) {
      time->RefuseValue("at least " + SecondsText(earliest) +
                        ", when the event before it happens for the last time");
    }
  }
  object.ReadWhole("repeat", event.repeat, 1, 100'000);
  object.ReadMilliseconds("every_ms", event.every, kLongestPauseMs);
  if (object.Has("every_ms") && !object.Has("repeat")) {
    object.Need("every_ms").Refuse("has no use alone", "\"repeat\" too");
  }
  if (LastTime(event) > std::chrono::seconds(kLongestStory)) {
    at.Refuse("ends after more than a year", "fewer or quicker repetitions");
  }
  form.read(object, event.action);
  return event;
}

bool NeedsService(Kind kind) {
  return kind == Kind::kStop || kind == Kind::kKill || kind == Kind::kControl;
}

}  // namespace

std::vector<Event> ReadEvents(const std::optional<JsonCursor>& at) {
  std::vector<Event> events;
  std::vector<JsonCursor> stops_before_start;
  bool started = false;
  for (const JsonCursor& item : at ? at->Items() : std::vector<JsonCursor>{}) {
    events.push_back(ReadEvent(item, events.empty() ? Duration{} : LastTime(events.back())));
    const Kind kind = events.back().action.kind;
    if (!started && NeedsService(kind)) stops_before_start.push_back(item.At("do"));
    started = started || kind == Kind::kStart;
  }
  if (!started) {
    events.insert(events.begin(), Event{});  // a start is the default
  } else if (!stops_before_start.empty()) {
    stops_before_start.front().RefuseValue("a \"start\" before it");
  }
  return events;
}

}  // namespace nuvelta::virtual_notebook
