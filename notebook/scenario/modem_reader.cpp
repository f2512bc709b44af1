#include <array>
#include <limits>

#include "notebook/scenario/scenario_parts.h"

namespace nuvelta::virtual_notebook {

namespace {

constexpr std::array kAnswerWords{
    Word{"healthy", Answer::Kind::kHealthy},   Word{"never", Answer::Kind::kNever},
    Word{"canceled", Answer::Kind::kCanceled}, Word{"error", Answer::Kind::kError},
    Word{"no_data", Answer::Kind::kNoData},
};

void ReadTimes(const JsonCursor& at, Answer& answer) {
  if (at.IsText()) {
    answer.times = at.Choice(std::array{Word{"always", uint32_t{0}}});
  } else {
    answer.times = static_cast<uint32_t>(at.Whole(1, 1'000'000));
  }
}

Answer ReadAnswerObject(const JsonCursor& at) {
  const JsonObject object(at, {"answer", "status", "data", "hresult", "times", "late_ms"});
  constexpr std::array<std::string_view, 4> kinds{"answer", "status", "data", "hresult"};
  Answer answer;
  const auto kind = object.OneOf(kinds);
  if (!kind && !object.Has("late_ms")) {
    at.Refuse("no answer given",
              "one of \"answer\", \"status\", \"data\", \"hresult\", \"late_ms\"");
  }
  if (kind == "answer") {
    answer.kind = object.Need("answer").Choice(kAnswerWords);
  } else if (kind == "status") {
    answer.kind = Answer::Kind::kStatus;
    answer.code = object.Need("status").NonZeroCode();
  } else if (kind == "data") {
    answer.kind = Answer::Kind::kData;
    answer.data = object.Need("data").Hex();
  } else if (kind == "hresult") {
    answer.kind = Answer::Kind::kHresult;
    answer.code = object.Need("hresult").FailingHresult();
  }
  if (const auto times = object.Find("times")) ReadTimes(*times, answer);
  if (const auto late = object.Find("late_ms")) {
    if (answer.kind == Answer::Kind::kNever) {
      late->Refuse("the answer never comes", "no \"late_ms\" beside \"never\"");
    }
    answer.after = late->Milliseconds(kLongestPauseMs);
  }
  return answer;
}

constexpr std::array kServiceWords{Word{"vendor", platform::kVendorService},
                                   Word{"sms", kSmsService}};

}  // namespace

std::vector<Answer> ReadAnswers(const JsonCursor& at) {
  std::vector<Answer> answers;
  for (const JsonCursor& item : at.Items()) {
    if (!answers.empty() && answers.back().times == 0) {
      item.Refuse("never reached", "no answer behind one that is given \"always\"");
    }
    if (item.IsObject()) {
      answers.push_back(ReadAnswerObject(item));
    } else {
      answers.push_back({.kind = item.Choice(kAnswerWords), .after = {}, .data = {}});
    }
  }
  return answers;
}

std::vector<platform::Guid> ReadDeviceServices(const JsonCursor& at) {
  std::vector<platform::Guid> services;
  for (const JsonCursor& item : at.Items()) {
    const bool guid = item.IsText() && item.Text().find('-') != std::string::npos;
    services.push_back(guid ? item.Guid() : item.Choice(kServiceWords));
  }
  return services;
}

ModemDescription ReadModem(const JsonCursor& at) {
  ModemDescription modem;
  if (at.IsNull()) {
    modem.present = false;
    return modem;
  }
  const JsonObject object(
      at, {"present", "hardware_id", "instance_id", "adapter_name", "description", "friendly_name",
           "oper_status", "adapter_place", "device_place", "mbim", "radio", "device_services",
           "latency_ms", "query", "set"});
  object.Read("present", modem.present);
  object.Read("hardware_id", modem.hardware_id);
  object.Read("instance_id", modem.instance_id);
  object.Read("adapter_name", modem.adapter_name);
  object.Read("description", modem.description);
  object.Read("friendly_name", modem.friendly_name);
  object.ReadWhole("oper_status", modem.oper_status, 1, 7);
  const auto read_place = [&object](std::string_view key, std::optional<uint32_t>& place) {
    if (const auto value = object.Find(key)) place = static_cast<uint32_t>(value->Whole(0, 65535));
  };
  read_place("adapter_place", modem.adapter_place);
  read_place("device_place", modem.device_place);
  object.Read("mbim", modem.mbim);
  object.ReadWhole("radio", modem.radio, std::numeric_limits<int32_t>::min(),
                   std::numeric_limits<int32_t>::max());
  if (const auto services = object.Find("device_services")) {
    modem.device_services = ReadDeviceServices(*services);
  }
  object.ReadMilliseconds("latency_ms", modem.latency, kLongestPauseMs);
  if (const auto query = object.Find("query")) modem.query = ReadAnswers(*query);
  if (const auto set = object.Find("set")) modem.set = ReadAnswers(*set);
  return modem;
}

}  // namespace nuvelta::virtual_notebook
