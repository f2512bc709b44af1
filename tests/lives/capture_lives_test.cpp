// Captures of notebooks made by dice: they play as the notebooks do, a capture of what they
// play is the same again, and no name is left in them.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>
#include <string>

#include "lives/life.h"
#include "notebook/machine/code_page.h"
#include "notebook/model/unicode.h"
#include "notebook/scenario/scenario_reader.h"
#include "notebook/scenario/scenario_text.h"
#include "story_support.h"
#include "support/capture/capture.h"

namespace nuvelta::test {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using explore::Dice;
using nlohmann::json;

constexpr uint64_t kCaptures = 200;
constexpr const char* kProfiles = "SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\ProfileList\\";

std::string ReadAll(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

// A notebook, and the names that are hidden in it.
struct Named {
  json story;
  std::vector<std::string> names{"NOTEBOOK"};  // the computer of every record
};

std::string MakeName(Dice& dice, std::string_view letters) {
  std::string name;
  for (auto left = dice.Between(5, 12); left > 0; --left) {
    name += letters[dice.Below(letters.size())];
  }
  return name;
}

std::string MakeSerial(Dice& dice) { return MakeName(dice, "BCDFGHJKLMNPQRSTVWZ23456780"); }

// An account name, sometimes with letters that no two encodings write alike.
std::string MakeAccount(Dice& dice) {
  constexpr std::array kMiddles{"", "", "ü", " ", "ñé", "-"};
  return MakeName(dice, "bdghklmnprstvw") + dice.Of(kMiddles) + MakeName(dice, "bdghklmnprstvw");
}

const std::string& Keep(Named& named, std::string name) {
  named.names.push_back(std::move(name));
  return named.names.back();
}

// The modem is asked once: what it does behind that cannot be captured.
void MakeSteady(Dice& dice, json& modem) {
  modem.erase("set");
  if (modem.contains("query") && !modem["query"].empty()) {
    json answer = modem["query"][0];
    answer["times"] = "always";
    answer.erase("late_ms");
    modem["query"] = json::array({answer});
  } else {
    modem.erase("query");
  }
  if (modem.contains("latency_ms")) {
    modem["latency_ms"] = dice.Of(std::array{0, 1, 100, 1900, 2500, 7000});
  }
}

void HideNames(Dice& dice, Named& named) {
  json& notebook = named.story["notebook"];
  if (!notebook.contains("firmware") || notebook["firmware"].is_object()) {
    json& firmware = notebook["firmware"];
    firmware["system_serial"] = Keep(named, MakeSerial(dice));
    firmware["baseboard_serial"] = Keep(named, MakeSerial(dice));
    if (dice.Percent(50)) firmware["baseboard_asset_tag"] = Keep(named, MakeSerial(dice));
  }
  const std::string account = Keep(named, MakeAccount(dice));
  if (dice.Percent(50)) {
    notebook["environment"] = {{"USERNAME", account},
                               {"COMPUTERNAME", Keep(named, MakeSerial(dice))}};
  } else {
    notebook["registry"][kProfiles + std::string("S-1-5-21-1")] = {
        {"ProfileImagePath", "C:\\Users\\" + account}};
  }
  if (dice.Percent(30)) notebook["program_path"] = "D:\\Users\\" + account + "\\service.exe";
  if (notebook.contains("modem") && dice.Percent(40)) {
    notebook["modem"]["friendly_name"] = "Phone of " + account;
  }
}

Named MakeNamed(uint64_t seed) {
  Dice dice(seed);
  Named named{.story = {{"title", "capture " + std::to_string(seed)}, {"seed", seed & 0xFFFFFFU}}};
  named.story["notebook"] = explore::MakeNotebook(dice);
  if (named.story["notebook"].contains("modem")) {
    MakeSteady(dice, named.story["notebook"]["modem"]);
  }
  HideNames(dice, named);
  named.story["time_zone"] =
      dice.Of(std::array{"UTC", "CST-8", "NST3:30", "CET-1CEST,M3.5.0,M10.5.0/3"});
  if (dice.Percent(50))
    named.story["notebook"]["uptime_s"] = 0.125 * static_cast<double>(dice.Between(1, 100'000));
  named.story["events"] = {{{"do", "start"}, {"at", 0}}};
  return named;
}

// Old logs tell of the names in the code page.
void AddOldLogs(Dice& dice, const fs::path& folder, Named& named) {
  json logs = json::array();
  for (auto left = dice.Between(0, 2); left > 0; --left) {
    const std::string file = "old" + std::to_string(left) + ".log";
    std::string text;
    for (const std::string& name : named.names) {
      text += "2026-10-01 00:58:50.000 00001008 i :   filename: C:\\Users\\" +
              virtual_notebook::ToCodePage(virtual_notebook::Utf16(name)) + "\\x.exe\r\n";
    }
    std::ofstream(folder / file, std::ios::binary) << text;
    logs.push_back({{"name", "nuvelta_maservice_monitor_HX2208GW_2026-10-0" + std::to_string(left) +
                                 "_10.00.00.log"},
                    {"age_days", left * 3},
                    {"raw_file", file}});
  }
  named.story["notebook"]["old_logs"] = logs;
}

// The capture of a notebook as its story starts; what it reports.
std::string CaptureAtStart(const Scenario& scenario, const fs::path& folder) {
  const TemporaryFolder disk;
  std::string said;
  int result = -1;
  const auto print = [&](std::string_view text) { said += text; };
  const StoryReport report = story::Play(
      scenario, {.disk = disk.Path(),
                 .visit = {.body =
                               [&] {
                                 result = support::Capture(
                                     {.folder = folder.string(), .query = true}, print, print);
                               },
                           .at = 0s}});
  EXPECT_EQ(result, 0) << said;
  EXPECT_EQ(report.leaked_handles, 0U);
  for (const auto& command : report.commands) EXPECT_FALSE(command.set);
  return said;
}

std::map<std::string, std::string> FilesIn(const fs::path& folder) {
  std::map<std::string, std::string> files;
  for (const auto& file : fs::recursive_directory_iterator(folder)) {
    if (!file.is_regular_file()) continue;
    files[fs::relative(file.path(), folder).string()] = ReadAll(file.path());
  }
  return files;
}

// What a scenario writes as digits, as the bytes that they stand for.
void AddBytes(const json& value, std::string& bytes) {
  for (const auto& [key, member] : value.items()) {
    if ((key == "raw_hex" || key == "hex") && member.is_string()) {
      const auto hex = virtual_notebook::ParseHex(member.get<std::string>());
      bytes.append(hex->begin(), hex->end());
    } else if (member.is_structured()) {
      AddBytes(member, bytes);
    }
  }
}

std::vector<std::string> SpellingsOf(const std::string& name) {
  const std::u16string wide = virtual_notebook::Utf16(name);
  const std::vector<uint8_t> bytes = virtual_notebook::Utf16Bytes(name, 0);
  return {name, virtual_notebook::ToCodePage(wide), std::string(bytes.begin(), bytes.end())};
}

void ExpectNoName(const std::map<std::string, std::string>& files, const Named& named) {
  std::string all;
  for (const auto& [name, content] : files) all += name + "\n" + content + "\n";
  AddBytes(json::parse(files.at("scenario.json")), all);
  for (const std::string& name : named.names) {
    for (const std::string& spelling : SpellingsOf(name)) {
      EXPECT_EQ(all.find(spelling), std::string::npos) << name << "\n" << named.story.dump();
    }
  }
}

// Where a name stands in the log there has to be another; everything else is the same.
void ExpectSameLog(const std::string& original, const std::string& replayed, const Named& named) {
  ASSERT_EQ(original.size(), replayed.size()) << named.story.dump();
  std::string masked = original;
  for (const std::string& name : named.names) {
    const std::string spelling = SpellingsOf(name)[1];
    for (size_t at = original.find(spelling); at != std::string::npos;
         at = original.find(spelling, at + 1)) {
      EXPECT_NE(replayed.substr(at, spelling.size()), spelling);
      masked.replace(at, spelling.size(), replayed, at, spelling.size());
    }
  }
  EXPECT_LINES(replayed, masked) << named.story.dump();
}

std::string LogOf(const Scenario& scenario, uint64_t seed) {
  const TemporaryFolder disk;
  story::Play(scenario, {.disk = disk.Path(), .seed = seed});
  return story::ReadLog(scenario, disk.Path());
}

uint64_t CountFrom(const char* variable, uint64_t otherwise) {
  const char* const text = std::getenv(variable);
  return text == nullptr ? otherwise : std::strtoull(text, nullptr, 10);
}

TEST(CaptureLives, PlayAsTheirNotebooksAndHoldNoName) {
  // For a longer measurement by command.
  const uint64_t lives = CountFrom("NUVELTA_CAPTURE_LIVES", kCaptures);
  const uint64_t first = CountFrom("NUVELTA_CAPTURE_SEED", 1);
  for (uint64_t seed = first; seed < first + lives && !HasFailure(); ++seed) {
    const TemporaryFolder folder;
    Named named = MakeNamed(seed);
    Dice dice(seed + 1'000'000);
    AddOldLogs(dice, folder.Path(), named);
    SCOPED_TRACE(seed);
    const Scenario original =
        virtual_notebook::ReadScenarioText(named.story.dump(), "life", folder.Path().string());
    const fs::path once = folder.Path() / "once";
    const fs::path again = folder.Path() / "again";
    const std::string said = CaptureAtStart(original, once);
    EXPECT_EQ(said.find("kept"), std::string::npos) << said << named.story.dump();
    const bool table = original.notebook.has_firmware_table;
    EXPECT_EQ(said.find("not seen  ") == std::string::npos, table) << said << named.story.dump();
    const Scenario captured = virtual_notebook::ReadScenarioFile((once / "scenario.json").string());
    const auto files = FilesIn(once);
    ExpectNoName(files, named);
    ExpectSameLog(LogOf(original, seed), LogOf(captured, seed), named);
    CaptureAtStart(captured, again);
    EXPECT_EQ(files, FilesIn(again)) << named.story.dump();
  }
}

}  // namespace
}  // namespace nuvelta::test
