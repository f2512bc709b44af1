#include "notebook/scenario/call_lists.h"

#include <nlohmann/json.hpp>

#include <array>
#include <cstdio>

namespace nuvelta::virtual_notebook {

namespace {

// As a scenario would give it: HRESULTs and the like are known by their digits.
std::string CodeText(uint32_t code) {
  std::array<char, 16> text{};
  std::snprintf(text.data(), text.size(), code < 0x80000000 ? "%u" : "`0x%08X`", code);
  return text.data();
}

std::string DurationText(Duration duration) {
  if (duration == Duration()) return "";
  return std::to_string(duration / std::chrono::milliseconds(1)) + " ms ";
}

}  // namespace

std::vector<std::string_view> WaysToFail(const PortCall& call) {
  std::vector<std::string_view> ways;
  if (call.can_fail) ways.emplace_back("error");
  if (call.can_throw) ways.insert(ways.end(), {"hresult", "bad_alloc"});
  if (call.can_be_null) ways.emplace_back("null");
  return ways;
}

std::string CallTable() {
  std::string table = "| Call | Ways to fail | Its own code | Takes |\n|---|---|---|---|\n";
  for (const PortCall& call : kPortCalls) {
    table.append("| `").append(call.name).append("` | ");
    std::string ways;
    for (const std::string_view way : WaysToFail(call)) {
      ways.append(ways.empty() ? "`" : ", `").append(way).append("`");
    }
    table += ways + " | " + CodeText(call.error) + " | " + DurationText(call.duration) + "|\n";
  }
  return table;
}

std::string CallDefinitions() {
  struct Group {
    const char* key;
    const char* description;
    bool (*holds)(const PortCall& call);
  };
  constexpr std::array kGroups{
      Group{"calls_that_answer_an_error", "Calls that can answer an error.",
            [](const PortCall& call) { return call.can_fail; }},
      Group{"calls_that_throw", "Calls that can throw.",
            [](const PortCall& call) { return call.can_throw && !call.can_be_null; }},
      Group{"calls_that_throw_or_answer_null", "Calls that can throw or answer a null object.",
            [](const PortCall& call) { return call.can_be_null; }}};
  nlohmann::ordered_json definitions;
  for (const Group& group : kGroups) {
    definitions[group.key] = {{"description", group.description}, {"enum", {}}};
    for (const PortCall& call : kPortCalls) {
      if (group.holds(call)) definitions[group.key]["enum"].push_back(call.name);
    }
  }
  return definitions.dump(2) + "\n";
}

}  // namespace nuvelta::virtual_notebook
