#include <algorithm>
#include <array>

#include "notebook/scenario/call_lists.h"
#include "notebook/scenario/scenario_parts.h"
#include "notebook/scenario/scenario_text.h"

namespace nuvelta::virtual_notebook {

namespace {

const PortCall& ReadCall(const JsonCursor& at) {
  const std::string name = at.Text();
  if (const PortCall* const call = FindCall(name)) return *call;
  std::vector<std::string_view> names;
  names.reserve(kPortCalls.size());
  for (const PortCall& known : kPortCalls) names.push_back(known.name);
  at.Refuse("unknown call \"" + Shown(name) + "\"",
            "a call that can fail" + Suggestion(name, names));
}

void ReadFailure(const JsonObject& object, const PortCall& call, Fault& fault) {
  constexpr std::array<std::string_view, 4> keys{"error", "hresult", "bad_alloc", "null"};
  const auto key = object.OneOf(keys);
  if (!key) {
    fault.kind = call.can_throw ? Fault::Kind::kHresult : Fault::Kind::kError;
    fault.code = call.error;
    return;
  }
  const JsonCursor value = object.Need(*key);
  const std::vector<std::string_view> ways = WaysToFail(call);
  if (std::ranges::find(ways, *key) == ways.end()) {
    value.Refuse("\"" + fault.call + "\" cannot fail in this way", "one of " + QuotedList(ways));
  }
  if (*key == "error") {
    fault.code = value.NonZeroCode();
  } else if (*key == "hresult") {
    constexpr uint32_t out_of_memory = 0x8007000E;  // E_OUTOFMEMORY
    fault.code = value.FailingHresult();
    // As the platform's projection has it.
    fault.kind = fault.code == out_of_memory ? Fault::Kind::kBadAlloc : Fault::Kind::kHresult;
  } else {
    fault.kind = *key == "null" ? Fault::Kind::kNull : Fault::Kind::kBadAlloc;
    if (!value.Bool()) value.RefuseValue("true, or no such key");
  }
}

// Which calls of the name are meant; a count of 0 is all from the nth on.
void ReadCalls(const JsonObject& object, uint32_t& nth, uint32_t& count) {
  object.ReadWhole("nth", nth, 1, 1'000'000'000);
  if (const auto value = object.Find("count")) {
    count = value->IsText() ? value->Choice(std::array{Word{"always", uint32_t{0}}})
                            : static_cast<uint32_t>(value->Whole(1, 1'000'000'000));
  }
}

Delay ReadDelay(const JsonCursor& at) {
  const JsonObject object(at, {"call", "nth", "count", "late_ms"});
  Delay delay{.call = std::string(ReadCall(object.Need("call")).name)};
  ReadCalls(object, delay.nth, delay.count);
  delay.late = object.Need("late_ms").Milliseconds(kLongestPauseMs);
  return delay;
}

Fault ReadFault(const JsonCursor& at) {
  const JsonObject object(at, {"call", "nth", "count", "error", "hresult", "bad_alloc", "null"});
  const PortCall& call = ReadCall(object.Need("call"));
  Fault fault{.call = std::string(call.name)};
  ReadCalls(object, fault.nth, fault.count);
  ReadFailure(object, call, fault);
  return fault;
}

bool Overlap(const Fault& one, const Fault& other) {
  const auto begins_inside = [](const Fault& late, const Fault& early) {
    return late.nth >= early.nth && (early.count == 0 || late.nth - early.nth < early.count);
  };
  return one.call == other.call && (begins_inside(one, other) || begins_inside(other, one));
}

}  // namespace

std::vector<Fault> ReadFaults(const JsonCursor& at) {
  std::vector<Fault> faults;
  for (const JsonCursor& item : at.Items()) {
    Fault fault = ReadFault(item);
    for (const Fault& other : faults) {
      if (Overlap(fault, other)) item.Refuse("fails a call that fails already", "other calls");
    }
    faults.push_back(std::move(fault));
  }
  return faults;
}

std::vector<Delay> ReadDelays(const JsonCursor& at) {
  std::vector<Delay> delays;
  for (const JsonCursor& item : at.Items()) delays.push_back(ReadDelay(item));
  return delays;
}

}  // namespace nuvelta::virtual_notebook
