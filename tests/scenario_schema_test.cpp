// The published schema agrees with the reader.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <set>

#include "notebook/scenario/call_lists.h"
#include "notebook/scenario/scenario_reader.h"
#include "schema_validator.h"
#include "source_folder.h"

namespace nuvelta::virtual_notebook {
namespace {

using nlohmann::json;
const std::string kRoot = test::SourceFolder();

json Parsed(const std::string& path) {
  std::ifstream file(path);
  return json::parse(file);
}

json EveryKey() { return Parsed(kRoot + "/tests/data/every_key.json"); }

// The one key that cannot stand beside the others. Any file does.
const json kRawFirmware = {{"title", "t"},
                           {"notebook", {{"firmware", {{"raw_file", "healthy_arrival.json"}}}}}};

bool ReaderAccepts(const json& document) {
  try {
    ReadScenarioText(document.dump(), "x.json", kRoot + "/scenarios");
    return true;
  } catch (const ScenarioError&) {
    return false;
  }
}

json SchemaJson() { return Parsed(kRoot + "/docs/scenarios.schema.json"); }

// Calls `visit` with the place of every value inside `value`, itself included.
void ForEachPlace(const json& value, const json::json_pointer& at,
                  const std::function<void(const json::json_pointer&)>& visit) {
  visit(at);
  for (const auto& [key, member] : value.items()) {
    if (value.is_object()) ForEachPlace(member, at / key, visit);
    if (value.is_array()) ForEachPlace(member, at / static_cast<size_t>(std::stoul(key)), visit);
  }
}

TEST(ScenarioSchema, AgreesWithTheReader) {
  const json forms = SchemaJson();
  const test::SchemaValidator schema(forms);
  const std::set<std::string> names_are_free{"registry", "SOFTWARE\\A", "environment"};
  std::set<std::string> used;
  for (const json& whole : {EveryKey(), kRawFirmware}) {
    EXPECT_TRUE(schema.Accepts(whole));
    EXPECT_TRUE(ReaderAccepts(whole));
    ForEachPlace(whole, json::json_pointer(), [&](const json::json_pointer& at) {
      const std::string name = at.empty() ? "" : at.back();
      used.insert(name);
      // A key too many, or a value of a type that fits nowhere.
      json wrong = whole;
      if (whole[at].is_object() && !names_are_free.contains(name)) wrong[at]["zzz"] = 1;
      if (!whole[at].is_structured()) wrong[at] = json::array();
      if (wrong == whole) return;
      EXPECT_FALSE(schema.Accepts(wrong)) << at;
      EXPECT_FALSE(ReaderAccepts(wrong)) << at;
    });
  }
  ForEachPlace(forms, json::json_pointer(), [&](const json::json_pointer& at) {
    if (at.to_string().ends_with("/properties") && !at.to_string().ends_with("/not/properties")) {
      for (const auto& [key, form] : forms[at].items()) {
        EXPECT_TRUE(used.contains(key)) << "not tried here: " << key;
        EXPECT_TRUE(form.contains("description")) << at << " " << key;
      }
    }
  });
  const json calls = json::parse(CallDefinitions());
  for (const auto& [name, definition] : calls.items()) {
    EXPECT_EQ(forms["definitions"].value(name, json()), definition)
        << "docs/scenarios.schema.json: put in what `virtual_notebook calls --schema` prints";
  }
}

constexpr const char* kImpossible = R"([
["/seed", -1], ["/seed", 1.5], ["/start_time", "2024-13-01 00:00:00"], ["/time_zone", "X"], ["/rest_within_s", -1],
["/notebook/firmware/raw_hex", "00"], ["/notebook/firmware/fcc", "here"], ["/notebook/firmware/fcc/hex", ""],
["/notebook/firmware/system_length", 28], ["/notebook/registry/SOFTWARE\\A/number", -1],
["/notebook/registry/\\A", {}], ["/notebook/adapters/0/if_type", "modem"], ["/notebook/modem/radio", 2147483648],
["/notebook/modem/query/0", "late"], ["/notebook/modem/query/2/status", 0], ["/notebook/modem/query/2/data", "00"],
["/notebook/modem/query/1/times", 0], ["/notebook/modem/query/4", {"late_ms": 1, "answer": "never"}],
["/notebook/modem/set/0/hresult", "0x1"], ["/notebook/modem/device_services/0", "mms"],
["/notebook/event_log/0/at", 1], ["/notebook/event_log/1/source", "s"], ["/notebook/old_logs/0/name", "x.log"],
["/notebook/old_logs/1/name", "a/b"], ["/notebook/old_logs/1/size_mb", 1], ["/notebook/environment/A=B", "x"],
["/notebook/program_version", "1.2"], ["/events/0/at", -1], ["/events/0/do", "begin"], ["/events/0/every_ms", 1],
["/events/1/repeat", 0], ["/events/3/number", 0], ["/events/12/source", "s"], ["/faults/0/call", "Sleep"],
["/faults/0/hresult", "0x80004005"], ["/faults/0/error", 0], ["/faults/0/nth", 0], ["/faults/0/count", "forever"],
["/delays/0/call", "Sleep"], ["/delays/0/count", 0], ["/delays/0", {"call": "CreateEventW"}], ["/delays/0/late_ms", -1],
["/faults/2/null", true], ["/faults/3/bad_alloc", false], ["/faults/4/hresult", "0x80004005"]])";

TEST(ScenarioSchema, RefusesImpossibleValuesLikeTheReader) {
  const test::SchemaValidator schema(SchemaJson());
  for (const json& mutation : json::parse(kImpossible)) {
    json wrong = EveryKey();
    wrong[json::json_pointer(mutation[0].get<std::string>())] = mutation[1];
    EXPECT_FALSE(schema.Accepts(wrong)) << mutation;
    EXPECT_FALSE(ReaderAccepts(wrong)) << mutation;
  }
}

TEST(ScenarioSchema, AcceptsEveryStoryThatIsShipped) {
  const test::SchemaValidator schema(SchemaJson());
  for (const auto& file : std::filesystem::directory_iterator(kRoot + "/scenarios")) {
    if (file.path().extension() != ".json") continue;
    EXPECT_NO_THROW(ReadScenarioFile(file.path().string())) << file.path();
    EXPECT_TRUE(schema.Accepts(Parsed(file.path()))) << file.path();
  }
}

}  // namespace
}  // namespace nuvelta::virtual_notebook
