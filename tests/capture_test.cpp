// Captures of single notebooks: the whole text, what stays and what is refused; and scenarios
// made of logs.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "notebook/scenario/scenario_reader.h"
#include "story_support.h"
#include "support/capture/capture.h"
#include "support/capture/log_scenario.h"
#include "support/capture/renaming.h"
#include "support/log_files.h"

namespace nuvelta::test {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

struct Captured {
  int code = -1;
  std::string said;
};

std::string FileText(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

Captured CaptureOf(const Scenario& scenario, const fs::path& folder, bool query = true,
                   bool keep_names = false) {
  const TemporaryFolder disk;
  Captured captured;
  const auto say = [&](std::string_view text) { captured.said += text; };
  story::Play(
      scenario,
      {.disk = disk.Path(),
       .visit = {.body =
                     [&] {
                       captured.code = support::Capture(
                           {.folder = folder.string(), .query = query, .keep_names = keep_names},
                           say, say);
                     },
                 .at = 0s}});
  const size_t at = captured.said.find(folder.string());
  if (at != std::string::npos) captured.said.replace(at, folder.string().size(), "FOLDER");
  return captured;
}

Scenario Short(const std::string& members) {
  return Inline("{'notebook': {'adapters': [], 'devices': [], 'sessions': [], 'services': []," +
                members + "}}");
}

TEST(Capture, WritesANotebookDown) {
  const TemporaryFolder folder;
  const Captured captured = CaptureOf(
      Short(
          R"('firmware': {'system_serial': 'PF3KX1Q7', 'baseboard_serial': 'Short ThinkPad T14 Gen 5',
               'baseboard_asset_tag': 'T14'},
               'environment': {'USERNAME': 'Müller', 'COMPUTERNAME': 'Notebook'},
               'program_path': 'D:\\Users\\müller\\s.exe', 'program_version': '2.0.0.7',
               'registry': {'SOFTWARE\\Nuvelta Wireless Inc\\MAService': {'IsDisableVerify': 256}},
               'modem': {'query': [{'status': 2, 'times': 'always'}], 'latency_ms': 30})"),
      folder.Path() / "new");
  EXPECT_EQ(captured.code, 0);
  EXPECT_LINES(captured.said, R"(captured, 2026-11-16 00:58:46: FOLDER/scenario.json, 0 logs
  renamed   2 serial numbers (8, 24 characters)
  renamed   1 UUID (36 characters)
  renamed   1 account name (6 characters)
  renamed   1 computer name (8 characters)
  kept      1 asset tag (3 characters): too short to be told from other texts
  assumed   the modem obeys a set command
  assumed   the modem answers every query as it has answered this one
)");
  EXPECT_LINES(FileText(folder.Path() / "new" / "scenario.json"), R"({
 "title": "Captured notebook, 2026-11-16 00:58:46",
 "story": "A notebook as it was found; the service is started on it.",
 "start_time": "2026-11-16 00:58:46",
 "time_zone": "UTC",
 "notebook": {
  "firmware": {
   "raw_file": "firmware.bin"
  },
  "modem": {
   "adapter_name": "{5C1E7A90-3D42-4B7E-9C55-0A2B4C6D8E10}",
   "description": "HX2208 Mobile Broadband",
   "friendly_name": "Cellular",
   "oper_status": 2,
   "instance_id": "USB\\VID_3A5E&PID_4A10&MI_00\\6&2A1B3C4D&0&0000",
   "hardware_id": "USB\\VID_3A5E&PID_4A10&REV_0318&MI_00",
   "mbim": true,
   "device_services": [
    "{533FBEEB-14FE-4467-9F90-33A223E56C3F}",
    "vendor"
   ],
   "latency_ms": 30,
   "query": [
    {
     "status": "0x2",
     "times": "always"
    }
   ]
  },
  "registry": {
   "SOFTWARE\\Nuvelta Wireless Inc\\MAService": {
    "IsDisableVerify": 256
   }
  },
  "adapters": [],
  "devices": [],
  "event_log": [
   {
    "raw_hex": "60 00 00 00 4C 66 4C 65 01 00 00 00 1A 54 FA 6A 1A 54 FA 6A 71 17 00 00 04 00 00 00 00 00 00 00 00 00 00 00 5C 00 00 00 00 00 00 00 5C 00 00 00 00 00 00 00 5C 00 00 00 57 00 6C 00 63 00 6C 00 6E 00 74 00 66 00 79 00 00 00 58 00 58 00 58 00 58 00 58 00 41 00 41 00 45 00 00 00 60 00 00 00"
   }
  ],
  "accounts": 0,
  "sessions": [],
  "services": [
   {
    "name": "Nuvelta Wireless AUTH Service HX2208"
   }
  ],
  "uptime_s": 42.0,
  "old_logs": [],
  "program_path": "D:\\Users\\xéxaaf\\s.exe",
  "program_version": "2.0.0.7"
 },
 "events": [
  {
   "at": 0,
   "do": "start"
  }
 ]
}
)");
}

TEST(Capture, LeavesWhatDecides) {
  const TemporaryFolder disk;
  const fs::path folder = disk.Path() / "capture";
  const Captured captured = CaptureOf(Short(R"('firmware': {'system_serial': 'ThinkPad T14 Gen 5'},
               'environment': {'USERNAME': 'sessions', 'COMPUTERNAME': 'thinkpad'})"),
                                      folder);
  EXPECT_LINES(captured.said, R"(captured, 2026-11-16 00:58:46: FOLDER/scenario.json, 0 logs
  renamed   1 serial number (10 characters)
  renamed   1 UUID (36 characters)
  renamed   1 computer name (8 characters)
  kept      1 serial number (18 characters): part of a text that has to stay
  kept      1 account name (8 characters): part of a text that has to stay
  kept      1 computer name (8 characters): part of a text that has to stay
  assumed   the modem obeys a set command
)");
}

TEST(Capture, LeavesNamesAndModemAloneWhenAskedTo) {
  const TemporaryFolder disk;
  const fs::path folder = disk.Path() / "capture";
  const Captured captured = CaptureOf(Short("'accounts': 0"), folder, false, true);
  EXPECT_LINES(captured.said, R"(captured, 2026-11-16 00:58:46: FOLDER/scenario.json, 0 logs
  kept      all names
  assumed   the modem obeys a set command
  assumed   the radio is at level 4 (off): the modem was not asked
)");
  EXPECT_NE(FileText(folder / "firmware.bin").find("PF000001"), std::string::npos);
}

TEST(Capture, ReplacesItsOwnAlone) {
  const TemporaryFolder disk;
  const fs::path folder = disk.Path() / "capture";
  fs::create_directory(folder);
  const fs::path theirs = folder / "notes.txt";
  std::ofstream(theirs) << "theirs";
  const Captured refused = CaptureOf(Short("'accounts': 0"), folder);
  EXPECT_EQ(refused.code, support::kBadInput);
  EXPECT_EQ(refused.said,
            "FOLDER: there are files in it, and it was not written by this program\n");
  EXPECT_FALSE(fs::exists(folder / "scenario.json"));
  fs::remove(theirs);
  EXPECT_EQ(CaptureOf(Short("'old_logs': [{'age_days': 1, 'size_bytes': 7}]"), folder).code, 0);
  EXPECT_FALSE(fs::is_empty(folder / "logs"));
  std::ofstream(theirs) << "theirs";
  EXPECT_EQ(CaptureOf(Short("'accounts': 0"), folder).code, 0);
  EXPECT_FALSE(fs::exists(folder / "logs"));
  EXPECT_TRUE(fs::exists(theirs));
  // A file that cannot be written leaves no scenario.
  fs::remove(folder / "firmware.bin");
  fs::create_directories(folder / "firmware.bin" / "x");
  EXPECT_EQ(CaptureOf(Short("'accounts': 0"), folder).code, support::kNotWritten);
  EXPECT_FALSE(fs::exists(folder / "scenario.json"));
}

TEST(Capture, GivesNamesOfTheSameAlphabet) {
  EXPECT_EQ(support::ReplacementOf("pf3kx1q7", 12), "xx9xx0b2");
  EXPECT_EQ(support::ReplacementOf("anna-pc.x", 1), "xxxx-aa.b");
  EXPECT_EQ(support::ReplacementOf("王小明", 12), "甲乙丙");
  EXPECT_EQ(support::ReplacementOf("дарья", 3), "яяяяя");
}

// The causes of all runs, a bar behind each process.
struct Causes final : support::LogListener {
  void OnRun(const support::Run& run) override { chain += std::string(InfoOf(run.cause).id) + " "; }
  void OnProcessEnds(const support::Process& process) override {
    if (process.has_begin) chain += "| ";
  }
  std::string chain;
};

std::string ChainOf(const Scenario& scenario, const fs::path& disk) {
  story::Play(scenario, {.disk = disk});
  Causes causes;
  std::error_code error;
  support::ReadLogFiles(support::LogFilesIn(story::LogFolder(scenario, disk), error), causes);
  return causes.chain;
}

TEST(LogScenario, ComesToTheCausesOfItsLog) {
  for (const std::string& name : ShippedScenarios()) {
    const TemporaryFolder first;
    const TemporaryFolder second;
    const Scenario scenario = Shipped(name);
    const std::string chain = ChainOf(scenario, first.Path());
    std::string text;
    std::string assumed;
    const int code = support::WriteLogScenario(
        {.path = story::LogFolder(scenario, first.Path()).string(), .file = {}},
        [&](std::string_view said) { text += said; },
        [&](std::string_view said) { assumed += said; });
    if (name == "logging_off") {
      EXPECT_EQ(code, support::kBadInput) << name;
      continue;
    }
    ASSERT_EQ(code, 0) << name << assumed;
    EXPECT_EQ(ChainOf(virtual_notebook::ReadScenarioText(text, name, ""), second.Path()), chain)
        << name << "\n"
        << text;
    EXPECT_NE(assumed.find("  assumed   behind what the log tells, the modem is healthy\n"),
              std::string::npos);
  }
}

}  // namespace
}  // namespace nuvelta::test
