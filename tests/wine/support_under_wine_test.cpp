// The shipped support program on the notebooks of stories under Wine: the doctor's findings
// against those on the virtual notebook, and what it leaves alone.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <tuple>

#include "support/doctor.h"
#include "support/explain.h"
#include "wine/program/journal_report.h"
#include "wine/under_wine.h"

namespace nuvelta::test {
namespace {

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

using DoctorUnderWine = UnderWine;

TEST_F(DoctorUnderWine, FindsWhatItFindsOnTheVirtualNotebook) {
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

TEST_F(DoctorUnderWine, FindsTheRadioOffBeforeTheServiceHasRun) {
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

}  // namespace
}  // namespace nuvelta::test
