// The shipped executable under Wine's own service control manager. The log's text
// is compared with the virtual notebook's elsewhere (parity); here is what only
// Windows has.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <regex>
#include <set>

#include "notebook/story/log_files.h"
#include "story_support.h"
#include "wine/program/journal_report.h"
#include "wine/story/places.h"
#include "wine/under_wine.h"

namespace nuvelta::test {
namespace {

namespace fs = std::filesystem;
using wine_notebook::WineStory;

// The crash dumps in a folder.
std::set<fs::path> DumpsIn(const fs::path& folder) {
  std::set<fs::path> dumps;
  for (const auto& file : fs::directory_iterator(folder)) {
    if (file.path().extension() == ".dmp") dumps.insert(file.path());
  }
  return dumps;
}

// The manager's own answers, right after each report: type, state, controls, two
// exit codes, check point, wait hint.
std::vector<std::vector<uint32_t>> ManagersStates(const WineStory& story) {
  std::vector<std::vector<uint32_t>> states;
  for (const wine::Entry& entry : story.journal) {
    if (const auto* status = std::get_if<wine::StatusReported>(&entry.what)) {
      const platform::ServiceStatus& s = status->managers;
      states.push_back({s.dwServiceType, s.dwCurrentState, s.dwControlsAccepted, s.dwWin32ExitCode,
                        s.dwServiceSpecificExitCode, s.dwCheckPoint, s.dwWaitHint});
    }
  }
  return states;
}

TEST_F(UnderWine, LivesFromStartToStopAndMakesItsLogFolderFromNothing) {
  fs::remove_all(prefix.HostPath("C:\\users\\Public\\Nuvelta Wireless Inc"));
  const WineStory story = Play("healthy_arrival");
  const std::vector<std::vector<uint32_t>> expected{{16, 2, 0, 0, 0, 1, 1000},
                                                    {16, 4, 0x81, 0, 0, 0, 0},
                                                    {16, 3, 0x81, 0, 0, 2, 0},
                                                    {16, 1, 0x81, 0, 0, 0, 0}};
  EXPECT_EQ(ManagersStates(story), expected);
  EXPECT_EQ(Commands(story.report), "00 01000000");
  EXPECT_EQ(story.report.radio_after, 1);
  ASSERT_EQ(story.report.processes.size(), 1U);
  EXPECT_EQ(story.report.processes[0].exit_code, 0U);
  EXPECT_TRUE(story.log.ends_with("N auth Monitor Service: Main: Exit\r\n"));
  // The version comes from the executable's resource.
  EXPECT_NE(story.log.find("verion: " NUVELTA_VERSION "\r\n"), std::string::npos);
}

TEST_F(UnderWine, StopsWhileTheWorkerIsBusy) {
  const WineStory story = Play("stop_while_busy");
  EXPECT_EQ(States(story.report), "2 4 3 1");
  EXPECT_TRUE(wine_notebook::StatusDisagreements(story.journal).empty());
  EXPECT_TRUE(story.report.notes.empty());
  EXPECT_TRUE(story.report.Behaved());
  EXPECT_NE(story.log.find("SERVICE_CONTROL_STOP g_pNService->stop(); exit"), std::string::npos);
}

// taskkill and net start are Wine's programs; the new process is the manager's.
TEST_F(UnderWine, HasItselfKilledAndStartedWhenTheModemKeepsFailing) {
  const WineStory story = Play("self_restart");
  ASSERT_EQ(story.report.processes.size(), 2U);
  const auto& [first, second] = std::tie(story.report.processes[0], story.report.processes[1]);
  EXPECT_EQ(first.how, virtual_notebook::ProcessEnd::How::kKilled);
  EXPECT_EQ(second.how, virtual_notebook::ProcessEnd::How::kReturned);
  EXPECT_EQ(story.report.launches,
            std::vector<std::string>{"cmd.exe /C taskkill /pid " + std::to_string(first.process) +
                                     " /f & net start \"Nuvelta Wireless AUTH Service HX2208\""});
  EXPECT_EQ(States(story.report), "2 4 | 2 4 3 1");
  EXPECT_EQ(story.report.radio_after, 1);
  std::vector<std::string> logs;
  for (const auto& file : fs::directory_iterator(story.log_folder)) {
    logs.push_back(story::ReadFile(file.path()));
  }
  ASSERT_EQ(logs.size(), 2U);
  const auto has = [&](const char* text) {
    return std::ranges::count_if(
        logs, [&](const std::string& log) { return log.find(text) != std::string::npos; });
  };
  EXPECT_EQ(has("NService start"), 2);
  EXPECT_EQ(has(" RestartService success."), 1);
  EXPECT_EQ(has("SET MBIM FUN SUCCESS!"), 1);
}

// A story of two starts, the notebook being the usual one.
fs::path TwoStarts(const fs::path& folder) {
  const fs::path file = folder / "two_starts.json";
  std::ofstream(file) << R"({"title": "Two starts", "events": [
      {"at": 0, "do": "start"}, {"at": 60, "do": "start"}]})";
  return file;
}

// Two faults of the worker, in two processes one after the other; the second is an
// overflow of its stack.
TEST_F(UnderWine, LeavesOneDumpForEachFault) {
  const TemporaryFolder folder;
  const std::string file = TwoStarts(folder.Path()).string();
  EXPECT_EQ(
      Await(*prefix.RunDriver({"play", "Z:" + file, "crash", "crash-by-overflow"})).substr(0, 5),
      "logs ");
  const std::set<fs::path> dumps = DumpsIn(prefix.InstallFolder());
  ASSERT_EQ(dumps.size(), 2U);
  const std::regex guid("[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}\\.dmp");
  std::multiset<std::string> reasons;
  for (const fs::path& dump : dumps) {
    EXPECT_TRUE(std::regex_match(dump.filename().string(), guid)) << dump;
    const fs::path service = binaries / wine::kServiceFile;
    wine_notebook::ChildProcess debugger(
        {"/usr/bin/lldb-16", "--no-lldbinit", "--batch", "-o",
         "target create \"" + service.string() + "\" --core \"" + dump.string() + "\"", "-o",
         "target symbols add \"" + fs::path(service).replace_extension(".pdb").string() + "\"",
         "-o", "thread list", "-o", "bt"},
        {});
    const std::string told = Await(debugger);
    // The faulting thread is the selected one, and its functions have names.
    std::smatch reason;
    EXPECT_TRUE(std::regex_search(
        told, reason, std::regex("\\* thread #[0-9]+.*stop reason = Exception (0x[0-9a-f]+)")))
        << told;
    reasons.insert(reason[1]);
    // The stack that has overflowed is that of the virtual hardware, which has no symbols.
    if (reason[1] == "0xc00000fd") continue;
    EXPECT_NE(told.find("IsNuveltaMBIMDevcieExist"), std::string::npos) << told;
  }
  EXPECT_EQ(reasons, (std::multiset<std::string>{"0xc0000005", "0xc00000fd"}));
}

// A message box that nobody answers, and a dump that never gets done. The second start
// says that the manager takes the first process for ended.
TEST_F(UnderWine, EndsWhenTheHandlingOfAFaultHangs) {
  const TemporaryFolder folder;
  const std::string file = TwoStarts(folder.Path()).string();
  const std::string told =
      Await(*prefix.RunDriver({"play", "Z:" + file, "hang-in-message", "hang-in-dump"}));
  const std::regex end("ended after ([0-9]+) ms with exit code E06E7577");
  const std::vector<std::smatch> ends(
      {std::sregex_iterator(told.begin(), told.end(), end), std::sregex_iterator()});
  ASSERT_EQ(ends.size(), 2U) << told;
  for (const std::smatch& match : ends) EXPECT_LT(std::stoi(match[1]), 35000);
  // What was written of the second dump is nothing.
  std::multiset<bool> written;
  for (const fs::path& dump : DumpsIn(prefix.InstallFolder()))
    written.insert(fs::file_size(dump) > 100000);
  EXPECT_EQ(written, (std::multiset<bool>{false, true}));
}

TEST_F(UnderWine, SaysOnAConsoleThatTheManagerDidNotStartIt) {
  EXPECT_EQ(Await(*prefix.RunDriver({"console"})), "exit code 1063\n");
  std::string log;
  const fs::path folder =
      prefix.HostPath("C:\\ProgramData\\Nuvelta Wireless Inc\\MAService\\HX2208GW");
  for (const auto& file : fs::directory_iterator(folder)) log += story::ReadFile(file.path());
  EXPECT_TRUE(log.ends_with(
      "i :   N auth Service: Main: StartServiceCtrlDispatcher returned error : 1063\r\n"))
      << log;
}

}  // namespace
}  // namespace nuvelta::test
