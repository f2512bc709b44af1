// The reader of scenarios: it refuses with a place and an expectation, or what it
// returns can be played.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <string>

#include "notebook/model/port_calls.h"
#include "notebook/model/smbios_builder.h"
#include "notebook/scenario/scenario_reader.h"
#include "notebook/story/story.h"
#include "notebook/story/temporary_folder.h"
#include "target.h"

namespace nuvelta::fuzz {
namespace {

using virtual_notebook::Event;
using virtual_notebook::Scenario;

constexpr const char* kName = "fuzz.json";
constexpr uint32_t kPlayedOneIn = 256;
constexpr uint32_t kMostEventsPlayed = 50;

bool Contains(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

void RequireComplaint(std::string_view complaint) {
  const auto printable = [](char c) { return c >= ' ' && c <= '~'; };
  Require(std::ranges::all_of(complaint, printable), "a complaint is one line of plain letters");
  Require(complaint.starts_with("fuzz.json: /") ||
              (complaint.starts_with("fuzz.json: line ") && Contains(complaint, ", column ")),
          "a complaint names the file and the place");
  Require(Contains(complaint, "xpected "), "a complaint says what was expected");
  Require(complaint.size() < 4000, "a complaint can be read");
}

void RequireSound(const Scenario& scenario) {
  const auto is_control = [](char c) { return static_cast<unsigned char>(c) < ' '; };
  Require(!scenario.title.empty() && std::ranges::none_of(scenario.title, is_control),
          "a title of one line");
  Require(!scenario.events.empty(), "something happens");
  Require(std::ranges::is_sorted(scenario.events, {}, &Event::at), "events in order of time");
  for (const auto& fault : scenario.faults) {
    Require(virtual_notebook::FindCall(fault.call) != nullptr, "faults of calls that exist");
  }
  const auto table = virtual_notebook::BuildSmbiosTable(scenario.notebook.firmware);
  Require(table.size() >= 8, "a table can be built");
  // Its parts take it; nothing is played.
  const virtual_notebook::VirtualMachine machine(scenario, story::ServiceProgram(), {});
}

// Whether the story is told too: few are, for each takes milliseconds.
bool IsPlayed(const Scenario& scenario, Bytes input) {
  uint32_t hash = 2166136261U;
  for (const uint8_t byte : input) hash = (hash ^ byte) * 16777619U;
  uint64_t happenings = 0;
  for (const Event& event : scenario.events) happenings += event.repeat;
  return hash % kPlayedOneIn == 0 && happenings <= kMostEventsPlayed &&
         scenario.notebook.old_logs.empty();
}

void Run(Bytes input) {
  Scenario scenario;
  try {
    scenario = virtual_notebook::ReadScenarioText(Input::TextOf(input), kName, "/nonexistent");
  } catch (const virtual_notebook::ScenarioError& error) {
    RequireComplaint(error.what());
    return;
  }
  RequireSound(scenario);
  if (!IsPlayed(scenario, input)) return;
  const story::TemporaryFolder disk;
  virtual_notebook::StoryReport report;
  try {
    report = story::Play(scenario, {.disk = disk.Path()});
  } catch (const std::filesystem::filesystem_error&) {
    return;  // its log folder has a name longer than this host's disk can take
  }
  if (!scenario.faults.empty()) return;
  if (!report.Behaved()) std::fprintf(stderr, "%s\n", report.deadlock.c_str());
  Require(report.Behaved(), "without faults nothing crashes and nobody is stuck");
  Require(report.leaked_handles == 0, "without faults no handle leaks");
}

const Registration g_registration("scenario", Run);

}  // namespace
}  // namespace nuvelta::fuzz
