#include "fault_sweep.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <span>
#include <string_view>

#include "notebook/model/port_calls.h"
#include "notebook/scenario/scenario_reader.h"
#include "notebook/story/log_files.h"
#include "replay.h"
#include "source_folder.h"

namespace nuvelta::test {

namespace fs = std::filesystem;

namespace {

using nlohmann::json;
using virtual_notebook::Duration;
using virtual_notebook::Event;
using virtual_notebook::PortCall;

// Where the log goes when the variable of its root folder cannot be read.
constexpr const char* kFolderWithoutRoot = "Nuvelta Wireless Inc/MAService/HX2208GW";

// The part that is played unless all is. A few runs have no more places of a call
// than the first number; in a story of many runs, each like the one before, later
// places mostly say again what the earlier ones said.
constexpr uint32_t kPlaces = 60;
constexpr uint32_t kPlacesOfManyRuns = 16;
constexpr size_t kManyRuns = 8;
// Whole calls are left out, for each costs a story more that finds its last place.
constexpr uint32_t kEveryCall = 3;
constexpr uint32_t kEveryFault = 4;

std::vector<Fault> WaysToFail(const PortCall& call) {
  std::vector<Fault> ways;
  const auto add = [&](Fault::Kind kind, bool can) {
    if (can) ways.push_back({.call = std::string(call.name), .kind = kind, .code = call.error});
  };
  add(Fault::Kind::kError, call.can_fail);
  add(Fault::Kind::kNull, call.can_be_null);
  add(Fault::Kind::kHresult, call.can_throw);
  add(Fault::Kind::kBadAlloc, call.can_throw);
  return ways;
}

// FNV-1a, so that the choice is the same on every machine.
uint32_t Hash(std::string_view text) {
  uint32_t hash = 2166136261U;
  for (const char letter : text) hash = (hash ^ static_cast<uint8_t>(letter)) * 16777619U;
  return hash ^ (hash >> 15U);
}

// How much longer than without it a story may take with a fault that has passed.
constexpr std::chrono::seconds kPatience{90};
// With one that has not, the service may never rest: it is stopped this long
// after the last event, and again, for it may be between two lives just then.
constexpr std::chrono::seconds kLifeWithFault{25};
constexpr uint32_t kStops = 3;

// A worker without its event looks for tasks twice a second: in these stories a
// day long, for hours.
bool IsTooLong(const Scenario& scenario, const Fault& fault) {
  const bool polls = fault.call == "WaitForSingleObject" || fault.call == "CreateEventW";
  return fault.count == 0 && polls && scenario.events.back().at > std::chrono::minutes(30);
}

Duration EndOfEvents(const Scenario& scenario) {
  const Event& last = scenario.events.back();
  return last.at + (last.repeat - 1) * last.every;
}

double Seconds(Duration time) { return std::chrono::duration<double>(time).count(); }

json WithStop(const Sound& sound) {
  json document = sound.document;
  document["events"].push_back({{"at", Seconds(EndOfEvents(sound.scenario) + kLifeWithFault)},
                                {"do", "stop"},
                                {"repeat", kStops},
                                {"every_ms", 500}});
  return document;
}

// The scenario as a file would have it, so that it can be kept and played again.
json WithFault(const Sound& sound, const Fault& fault) {
  json document = fault.count == 0 ? WithStop(sound) : sound.document;
  json entry{{"call", fault.call}, {"nth", fault.nth}};
  if (fault.count == 0) entry["count"] = "always";
  if (fault.kind == Fault::Kind::kNull) entry["null"] = true;
  if (fault.kind == Fault::Kind::kBadAlloc) entry["bad_alloc"] = true;
  document["faults"].push_back(entry);
  if (fault.count != 0) {
    const Duration rest = sound.told.report.virtual_time - EndOfEvents(sound.scenario) + kPatience;
    document["rest_within_s"] = Seconds(rest);
  }
  return document;
}

Scenario Read(const json& document) {
  return virtual_notebook::ReadScenarioText(document.dump(), "the fault sweep",
                                            (SourceFolder() / "scenarios").string());
}

// Plays with its log, wherever the fault has sent that.
Told TellWithItsLog(const Scenario& scenario) {
  const TemporaryFolder disk;
  Told told{.report = story::Play(scenario, {.disk = disk.Path()}), .log = {}};
  const std::string begin = story::LogStamp(scenario);
  std::vector<fs::path> files =
      story::LogFilesSince(story::LogFolder(scenario, disk.Path()), begin);
  const auto strayed = story::LogFilesSince(disk.Path() / kFolderWithoutRoot, begin);
  files.insert(files.end(), strayed.begin(), strayed.end());
  // Processes follow each other, and their files' names begin with their starts.
  std::ranges::stable_sort(files, {}, [&](const fs::path& file) {
    const std::string name = file.filename().string();
    return name.substr(0, name.find(".log")).substr(0, name.rfind('_') + sizeof "_hh.mm.ss" - 1);
  });
  for (const fs::path& file : files) told.log += story::ReadFile(file);
  return told;
}

void TellWithFault(const Sound& sound, Faulted& faulted) {
  const json document = WithFault(sound, faulted.fault);
  NoteReplay([document, name = sound.name + " " + faulted.Describe()] {
    return ReplayCommand(KeepFinding(name, document.dump(2)));
  });
  faulted.scenario = Read(document);
  faulted.told = TellWithItsLog(faulted.scenario);
}

bool IsPlanned(const Scenario& scenario, const std::string& call) {
  return std::ranges::any_of(scenario.faults, [&](const Fault& own) { return own.call == call; });
}

}  // namespace

std::string Faulted::Describe() const {
  std::string text = fault.call + " #" + std::to_string(fault.nth);
  switch (fault.kind) {
    case Fault::Kind::kError:
      text += " fails with " + std::to_string(fault.code);
      break;
    case Fault::Kind::kNull:
      text += " answers null";
      break;
    case Fault::Kind::kHresult:
      text += " throws an HRESULT";
      break;
    case Fault::Kind::kBadAlloc:
      text += " throws bad_alloc";
      break;
  }
  return text + (Lasting() ? ", for good" : ", once");
}

Sound TellSound(const std::string& name) {
  const std::string file = "scenarios/" + name + ".json";
  NoteReplay([file] { return ReplayCommand(file); });
  std::ifstream text(SourceFolder() / file);
  Sound sound{.name = name,
              .document = json::parse(text),
              .scenario = Shipped(name),
              .told = {},
              .stopped = {},
              .lines = {},
              .stopped_lines = {}};
  sound.told = TellWithItsLog(sound.scenario);
  sound.stopped = TellWithItsLog(Read(WithStop(sound)));
  sound.lines = ReadLines(sound.told);
  sound.stopped_lines = ReadLines(sound.stopped);
  return sound;
}

SweepCounts Sweep(const Sound& sound, bool all, const std::function<void(const Faulted&)>& judge) {
  SweepCounts counts;
  // What is called to restart the service is called in these stories only.
  const bool all_calls = all || sound.told.Count("CommonUtil::RestartService();") > 0;
  const bool many = sound.told.Count(" Cast Time ") > kManyRuns;
  const uint32_t places = all ? UINT32_MAX : many ? kPlacesOfManyRuns : kPlaces;
  // False when the story does not come to the fault.
  const auto play = [&](const Fault& fault) {
    Faulted faulted{.fault = fault, .told = {}};
    if (!all && Hash(sound.name + faulted.Describe()) % kEveryFault != 0) return true;
    TellWithFault(sound, faulted);
    ++counts.stories;
    for (const FiredFault& fired : faulted.told.report.fired_faults) {
      if (fired.call == fault.call) faulted.fired.push_back(fired);
    }
    if (faulted.fired.empty()) return false;
    ++counts.cases;
    counts.injected += faulted.fired.size();
    judge(faulted);
    return true;
  };
  for (const PortCall& call : virtual_notebook::kPortCalls) {
    // The scenario fails these itself, and two faults never fail one call.
    if (IsPlanned(sound.scenario, std::string(call.name))) continue;
    if (!all_calls && Hash(sound.name + std::string(call.name)) % kEveryCall != 0) continue;
    // The call is made so often, and so often before a story with a lasting fault stops.
    bool made = true;
    bool made_before_stop = true;
    for (uint32_t nth = 1; made && nth <= places; ++nth) {
      for (Fault fault : WaysToFail(call)) {
        fault.nth = nth;
        made = made && play(fault);
        fault.count = 0;
        if (made && made_before_stop && !IsTooLong(sound.scenario, fault)) {
          made_before_stop = play(fault);
        }
      }
    }
  }
  return counts;
}

}  // namespace nuvelta::test
