// The shipped support program on the notebooks of stories under Wine: the doctor's findings
// against those on the virtual notebook, and what it leaves alone.
#include <gtest/gtest.h>

#include <fstream>
#include <nlohmann/json.hpp>
#include <tuple>

#include "support/doctor.h"
#include "support/explain.h"
#include "wine/program/journal_report.h"
#include "wine/under_wine.h"

namespace nuvelta::test {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;
using wine_notebook::Look;
using wine_notebook::LookUnderWine;
using wine_notebook::Moment;
using wine_notebook::ReportOf;

// What is the machine's: its clock, its processes, Wine's service control manager, which keeps
// no recovery settings and is told of a start by hand, and the prefix's own accounts and folders.
Json WithoutTheMachine(const std::string& document) {
  Json json = Json::parse(document);
  json.erase("time");
  for (const char* key : {"process", "since", "start_type", "recovery_error", "recovery",
                          "failures_forgotten_after_s"}) {
    json["service"].erase(key);
  }
  for (const char* key : {"path", "owner", "rights", "newest_log", "newest_log_bytes"}) {
    json["log_folder"].erase(key);
  }
  return json;
}

struct Virtual {
  std::string document;
  int exit_code = 0;
  StoryReport report;
};

Virtual LookVirtually(const Scenario& scenario) {
  const TemporaryFolder disk;
  Virtual found;
  const auto look = [&] {
    const support::Diagnosis diagnosis = support::Diagnose({.query = true});
    found.document = support::DiagnosisJson(diagnosis);
    found.exit_code = support::ExitCodeOf(support::InfoOf(diagnosis.run.cause).verdict);
  };
  found.report = story::Play(scenario, {.disk = disk.Path(), .visit = {.body = look, .at = {}}});
  return found;
}

// What reached the modem once the service was at rest: the support program's own.
std::string CommandsAtRest(const std::vector<wine::Entry>& journal) {
  StoryReport report;
  bool rests = false;
  for (const wine::Entry& entry : journal) {
    const auto* request = std::get_if<wine::Request>(&entry.what);
    rests = rests || (request != nullptr && request->kind == wine::Request::Kind::kEnd);
    const auto* made = std::get_if<wine::CommandMade>(&entry.what);
    if (rests && made != nullptr) report.commands.push_back(made->command);
  }
  return Commands(report);
}

using SupportUnderWine = UnderWine;

TEST_F(SupportUnderWine, DoctorFindsWhatItFindsOnTheVirtualNotebook) {
  for (const auto& [name, cause] :
       {std::tuple("healthy_arrival", "already_on"), std::tuple("wrong_modem", "modem_not_allowed"),
        std::tuple("fcc_missing", "fcc_structure_missing"),
        std::tuple("query_never_answered", "query_not_answered"),
        std::tuple("hibernate_resume", "already_on")}) {
    SCOPED_TRACE(name);
    const Look look =
        LookUnderWine(prefix, File(name), Shipped(name), Moment::kAfter, {"doctor", "--json"});
    const Virtual found = LookVirtually(Shipped(name));
    EXPECT_EQ(look.errors, "");
    EXPECT_EQ(look.exit_code, found.exit_code);
    EXPECT_EQ(WithoutTheMachine(look.output).dump(1), WithoutTheMachine(found.document).dump(1));
    EXPECT_EQ(Json::parse(look.output)["cause"], cause);
    // All that the modem got, the doctor's query the last.
    EXPECT_EQ(Commands(ReportOf(Shipped(name), look.journal)), Commands(found.report));
    EXPECT_EQ(CommandsAtRest(look.journal), "00");
  }
}

TEST_F(SupportUnderWine, DoctorFindsTheRadioOffBeforeTheServiceHasRun) {
  const char* const name = "sleep_resume";
  const Look look =
      LookUnderWine(prefix, File(name), Shipped(name), Moment::kBefore, {"doctor", "--json"});
  EXPECT_EQ(look.exit_code, support::ExitCodeOf(support::Verdict::kOffByFailure));
  const Json document = Json::parse(look.output);
  EXPECT_EQ(document["cause"], "would_switch_on");
  EXPECT_EQ(document["service"]["service_state"], "stopped");
  EXPECT_EQ(document["log_folder"]["logs"], 0);
  EXPECT_EQ(document["query"]["milliseconds"], 20);
  EXPECT_EQ(Commands(ReportOf(Shipped(name), look.journal)), "00");
  // Nothing but what it asked: no process of the service, no event.
  EXPECT_EQ(look.journal.size(), 1U);

  const Look silent = LookUnderWine(prefix, File(name), Shipped(name), Moment::kBefore,
                                    {"doctor", "--json", "--no-query"});
  EXPECT_EQ(Json::parse(silent.output)["cause"], "not_asked");
  EXPECT_TRUE(silent.journal.empty());
}

// A path with blanks and letters of no single code page.
TEST_F(SupportUnderWine, ReadsAndWritesFilesOfAnyName) {
  const TemporaryFolder folder;
  const fs::path logs = folder.Path() / "Pr\u00FCf Ordner \u65E5\u672C";
  const fs::path page = folder.Path() / "Seite \u00FC \u0141.html";
  fs::create_directories(logs);
  std::ofstream(logs / "nuvelta_maservice_monitor_HX2208GW_2026-11-16_00.58.46.log")
      << TellShipped("healthy_arrival").log;
  const auto run = [&](const std::vector<std::string>& arguments) {
    const Look look = LookUnderWine(prefix, File("healthy_arrival"), Shipped("healthy_arrival"),
                                    Moment::kBefore, arguments);
    EXPECT_EQ(look.errors, "");
    EXPECT_EQ(look.exit_code, 0);
    return look.output;
  };
  const auto complain = [](std::string_view what) { ADD_FAILURE() << what; };

  std::string expected = "Z:";
  const auto explanation = support::MakeTextExplanation(
      [&](std::string_view text) { expected += text; }, complain, false);
  support::Explain({logs.string()}, *explanation);
  EXPECT_LINES(run({"explain", "Z:" + logs.string()}), expected);

  EXPECT_EQ(run({"timeline", "Z:" + logs.string(), "-o", "Z:" + page.string()}),
            "Z:" + page.string() + ": radio on (switched_on), 259 lines, 3 runs\n");
  EXPECT_GT(fs::file_size(page), 10000U);
}

}  // namespace
}  // namespace nuvelta::test
