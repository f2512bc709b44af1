// What `explain --json` and `doctor --json` print is what their schemas say.
#include <gtest/gtest.h>

#include <set>
#include <sstream>

#include "notebook/story/log_files.h"
#include "notebook/story/story.h"
#include "schema_validator.h"
#include "source_folder.h"
#include "story_support.h"
#include "support/doctor.h"
#include "support/explain.h"

namespace nuvelta::test {
namespace {

using nlohmann::json;

TEST(ExplainSchema, DescribesEveryLineOfEveryShippedStory) {
  const json forms = json::parse(story::ReadFile(SourceFolder() / "docs/support.schema.json"));
  const SchemaValidator schema(forms);
  const std::vector<std::string> names = ShippedScenarios();
  std::vector<TemporaryFolder> disks(names.size());
  std::vector<std::string> folders;
  for (size_t i = 0; i < names.size(); ++i) {
    const Scenario scenario = Shipped(names[i]);
    story::Play(scenario, {.disk = disks[i].Path()});
    folders.push_back(story::LogFolder(scenario, disks[i].Path()).string());
  }
  std::string text;
  const auto explanation = support::MakeJsonExplanation(
      [&](std::string_view printed) { text += printed; }, [](std::string_view) {});
  support::Explain(folders, *explanation);
  std::istringstream lines(text);
  std::set<std::string> types;
  for (std::string line; std::getline(lines, line);) {
    const json row = json::parse(line);
    EXPECT_TRUE(schema.Accepts(row)) << line;
    json other = row;
    other["more"] = 1;
    EXPECT_FALSE(schema.Accepts(other)) << line;
    types.insert(row["type"]);
  }
  EXPECT_EQ(types,
            (std::set<std::string>{"trigger", "event", "run", "process", "verdict", "fleet"}));
}

TEST(DoctorSchema, DescribesWhatIsSeenOfEveryShippedNotebook) {
  const json forms = json::parse(story::ReadFile(SourceFolder() / "docs/doctor.schema.json"));
  const SchemaValidator schema(forms);
  std::set<std::string> causes;
  for (const std::string& name : ShippedScenarios()) {
    const TemporaryFolder disk;
    support::Diagnosis diagnosis;
    story::Play(Shipped(name), {.disk = disk.Path(),
                                .visit = {.body = [&] { diagnosis = support::Diagnose({}); }}});
    const json seen = json::parse(support::DiagnosisJson(diagnosis));
    EXPECT_TRUE(schema.Accepts(seen)) << name << ": " << seen.dump();
    json other = seen;
    other["more"] = 1;
    EXPECT_FALSE(schema.Accepts(other)) << name;
    EXPECT_EQ(seen["deciding_line"].is_null(), seen["cause"] == "would_switch_on") << seen.dump();
    causes.insert(seen["cause"]);
  }
  EXPECT_GE(causes.size(), 8U);
}

}  // namespace
}  // namespace nuvelta::test
