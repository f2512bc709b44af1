// Scenarios: what they mean, what is refused and in which words, and the firmware
// tables and failing calls that they describe.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

#include "notebook/model/fault_plan.h"
#include "notebook/model/smbios_builder.h"
#include "notebook/scenario/scenario_reader.h"
#include "platform/fcc_marker.h"
#include "source_folder.h"

namespace nuvelta::virtual_notebook {
namespace {

const std::string kSources = test::SourceFolder();

Scenario Read(const std::string& text) {
  return ReadScenarioText(text, "x.json", kSources + "/scenarios");
}

// A scenario that uses every key.
std::string EveryKey() {
  std::ifstream file(kSources + "/tests/data/every_key.json");
  return {std::istreambuf_iterator<char>(file), {}};
}

// What is wrong with the scenario; empty when nothing is.
std::string Complaint(const std::string& text) {
  try {
    Read(text);
    return {};
  } catch (const ScenarioError& error) {
    return error.what();
  }
}

// One case a line: what the fragment is a part of, the place and a phrase of the
// complaint, the fragment.
constexpr const char* kRefused = R"(
text | line 1, column 1 | unexpected end of input |
text | line 1, column 14 | number overflow | {"title":1e999}
text | / | an object | []
text | / | the key "title" | {}
text | /title | given twice | {"title":"t","title":"t"}
text | /titel | did you mean "title"? | {"titel":"t"}
text | /title | one line | {"title":"a\nb"}
text | /seed | a whole number from 0 | {"title":"t","seed":18446744073709551615}
text | /start_time | a moment | {"title":"t","start_time":"2025-02-29 00:00:00"}
text | /time_zone | POSIX | {"title":"t","time_zone":"CET-1CEST,M13.5.0,M10.5.0/3"}
text | /events/0/do | a "start" before it | {"title":"t","events":[{"do":"stop"},{"at":1,"do":"start"}]}
event | /events/1/d0 | "at", "do", "repeat", "every_ms"; did you mean "do"? | {"at":3,"d0":"stop"}
event | /events/1/do | given twice | {"do":"stop","do":"start"}
event | /events/1/do | did you mean "stop"? | {"do":"stpo"}
event | /events/1/name | unknown key | {"do":"stop","name":"x"}
event | /events/1/at | at least 2 | {"at":1.5,"do":"stop"}
event | /events/2/at | at least 3 | {"do":"arrival","repeat":3,"every_ms":500},{"at":2.9,"do":"stop"}
event | /events/1/repeat | found -1 | {"do":"arrival","repeat":-1}
event | /events/1 | a year | {"do":"arrival","repeat":100000,"every_ms":86400000}
event | /events/1/percent | 0 to 100 | {"do":"battery","percent":101}
event | /events/1 | changes nothing | {"do":"modem_changes"}
note | /notebook/firmware/system_version | together with "raw_hex" | "firmware":{"raw_hex":"00","system_version":"x"}
note | /notebook/firmware/raw_hex | pairs of hex | "firmware":{"raw_hex":"000"}
note | /notebook/firmware/raw_file | folder or below | "firmware":{"raw_file":"../run"}
note | /notebook/firmware/raw_file | can be read | "firmware":{"raw_file":"none.bin"}
note | /notebook/firmware/system_sku | character zero | "firmware":{"system_sku":"a\u0000b"}
note | /notebook/registry/HKLM\A~1~0B | root key | "registry":{"HKLM\\A/~B":{}}
note | /notebook/registry/A/v | letter case | "registry":{"A":{"V":1,"v":2}}
note | /notebook/sessions/1 | twice | "sessions":[{"id":4},{"id":4}]
note | /notebook/old_logs/0/size_bytes | only one of | "old_logs":[{"age_days":1,"size_mb":1,"size_bytes":1}]
query | /notebook/modem/query/0 | "healthy", "never" | "maybe"
query | /notebook/modem/query/0 | no answer | {"times":"always"}
query | /notebook/modem/query/1 | never reached | {"answer":"never","times":"always"},"healthy"
query | /notebook/modem/query/0/late_ms | never comes | {"answer":"never","late_ms":1}
query | /notebook/modem/query/0/hresult | failing HRESULT | {"hresult":"0x00000001"}
fault | /faults/0/call | did you mean "MobileBroadband::GetDefault"? | {"call":"GetDefault"}
fault | /faults/0/null | one of "error" | {"call":"CreateThread","null":true}
fault | /faults/1 | fails already | {"call":"SetEvent","nth":2,"count":"always"},{"call":"SetEvent","nth":9}
)";

TEST(Scenario, IsRefusedWithPlaceFaultAndExpectation) {
  const std::map<std::string, std::pair<std::string, std::string>> around{
      {"text", {"", ""}},
      {"event", {R"({"title":"t","events":[{"at":2,"do":"start"},)", "]}"}},
      {"note", {R"({"title":"t","notebook":{)", "}}"}},
      {"query", {R"({"title":"t","notebook":{"modem":{"query":[)", "]}}}"}},
      {"fault", {R"({"title":"t","faults":[)", "]}"}}};
  std::vector<std::array<std::string, 3>> cases{
      {"line 2, column 10", "expected ':'", "{\n\"title\" \"\xFF\"}"},
      {"line 1, column 312", "; expected '}'", R"({"title":")" + std::string(300, 'a') + R"("at})"},
      {std::string("/0/0/0"), "at most 64 levels", std::string(200000, '[')}};
  std::istringstream lines(kRefused);
  for (std::string line; std::getline(lines, line);) {
    std::array<std::string, 4> part;
    for (size_t i = 0; i < 4; ++i) {
      const size_t end = std::min(line.find(" |"), line.size());
      part[i] = line.substr(0, end);
      line.erase(0, end + 3);
    }
    const auto& [before, behind] = around.at(part[0].empty() ? "text" : part[0]);
    if (!part[0].empty()) cases.push_back({part[1], part[2], before + part[3] + behind});
  }
  for (const auto& [place, phrase, text] : cases) {
    const std::string complaint = Complaint(text);
    EXPECT_TRUE(complaint.starts_with("x.json: " + place)) << text.substr(0, 99) << complaint;
    EXPECT_NE(complaint.find(phrase), std::string::npos) << text.substr(0, 99) << complaint;
    EXPECT_NE(complaint.find("xpected"), std::string::npos) << complaint;
    EXPECT_EQ(complaint.find('\n'), std::string::npos) << complaint;
  }
}

TEST(Scenario, NoBytesCrashTheReader) {
  const std::string whole = EveryKey();
  ASSERT_EQ(Complaint(whole), "");
  const size_t end = whole.rfind('}');
  for (size_t i = 0; i <= end; ++i) EXPECT_NE(Complaint(whole.substr(0, i)), "") << i;
  for (size_t i = 0; i < end; i += 7) {
    std::string damaged = whole;
    damaged[i] = static_cast<char>(i * 37 + 129);
    Complaint(damaged);
  }
}

TEST(Scenario, MeansWhatItSays) {
  const Scenario plain = Read(R"({"title": "t", "events": [{"at": 3, "do": "arrival"}]})");
  ASSERT_EQ(plain.events.size(), 2U);
  EXPECT_EQ(plain.events[0].action.kind, Action::Kind::kStart);
  EXPECT_EQ(plain.events[0].at, Duration{});
  EXPECT_EQ(plain.events[1].at, std::chrono::seconds(3));
  EXPECT_EQ(plain.notebook.adapters.size(), 2U);
  EXPECT_EQ(plain.notebook.devices.size(), 3U);
  EXPECT_EQ(plain.notebook.firmware.fcc_content->size(), platform::kFccMarkerSize);

  const Scenario full = Read(EveryKey());
  EXPECT_EQ(full.events[2].at, std::chrono::seconds(2)) << "behind the last repetition";
  EXPECT_EQ(full.notebook.modem.query.back().kind, Answer::Kind::kHealthy);
  EXPECT_EQ(full.notebook.modem.query.back().after, std::chrono::seconds(3));
  EXPECT_EQ(full.notebook.old_logs[3].age, std::chrono::hours(27));
  EXPECT_FALSE(full.notebook.environment.contains("programdata")) << "names ignore letter case";
  EXPECT_EQ(full.notebook.registry.at("SOFTWARE\\A").at("text").data,
            (std::vector<uint8_t>{'x', 0, 0, 0}));
  EXPECT_EQ(full.faults[4].kind, Fault::Kind::kNull);
  EXPECT_EQ(full.faults[1].code, 8U) << "the call's own error";

  for (const auto& [word, size] :
       {std::pair("lower_case", 15), {"too_long", 16}, {"too_short", 14}}) {
    const std::string text = R"({"title":"t","notebook":{"firmware":{"fcc":")";
    const auto content = Read(text + word + "\"}}}").notebook.firmware.fcc_content;
    EXPECT_EQ(content->size(), static_cast<size_t>(size));
    EXPECT_EQ(content->at(1) == platform::kFccMarker[1], word != std::string("lower_case"));
  }

  FaultPlan plan({full.faults[0], full.faults[1], full.faults[2]});
  for (const uint32_t code : {8U, 1455U, 1455U}) EXPECT_EQ(plan.Count("CreateThread")->code, code);
  EXPECT_EQ(plan.Fired().size(), 3U);
  EXPECT_EQ(plan.NotFired().size(), 1U);
}

struct Structure {
  std::vector<uint8_t> formatted;
  std::vector<std::string> strings;
};

std::vector<Structure> Walk(const std::vector<uint8_t>& table) {
  std::vector<Structure> structures;
  for (size_t at = 8; at + 4 <= table.size();) {
    const size_t area = at + table[at + 1];
    Structure structure{
        {table.begin() + static_cast<ptrdiff_t>(at), table.begin() + static_cast<ptrdiff_t>(area)},
        {}};
    for (at = area; table.at(at) != 0; at += structure.strings.back().size() + 1) {
      structure.strings.emplace_back(reinterpret_cast<const char*>(&table[at]));
    }
    at += structure.strings.empty() ? 2 : 1;
    structures.push_back(std::move(structure));
  }
  return structures;
}

TEST(SmbiosBuilder, MakesATableThatOthersCanWalk) {
  SmbiosFields fields;
  fields.system_product = "";
  fields.system_length = 26;
  fields.fcc_content = {1, 'A', 'B'};
  const std::vector<uint8_t> table = BuildSmbiosTable(fields);
  EXPECT_EQ(table[4] + 256U * table[5], table.size() - 8);
  const std::vector<Structure> all = Walk(table);
  const auto of_type = [&](int type) {
    return std::ranges::find_if(all, [&](const Structure& s) { return s.formatted[0] == type; });
  };
  EXPECT_GT(of_type(1) - all.begin(), 1) << "real tables have others first";
  EXPECT_EQ(of_type(127), all.end() - 1);
  const Structure& system = *of_type(1);
  EXPECT_EQ(system.formatted.size(), 26U);
  EXPECT_EQ(system.formatted[5], 0) << "no string for an empty text";
  EXPECT_EQ(system.strings.at(system.formatted[6] - 1U), fields.system_version);
  EXPECT_EQ(system.strings.at(system.formatted[0x19] - 1U), fields.system_sku);
  EXPECT_EQ(system.strings.size(), 4U) << "no family behind the formatted length";
  EXPECT_EQ(of_type(2)->strings.at(of_type(2)->formatted[8] - 1U), fields.baseboard_asset_tag);
  EXPECT_EQ(of_type(4)->strings.at(of_type(4)->formatted[16] - 1U), fields.processor_version);
  EXPECT_EQ(of_type(133)->formatted, (std::vector<uint8_t>{133, 5, 0x85, 0, 1}));
  EXPECT_EQ(of_type(133)->strings, (std::vector<std::string>{"AB"}));
}

}  // namespace
}  // namespace nuvelta::virtual_notebook
