// The logger's files, retention, the registry switches and the account watcher. The lines
// that the logger writes are its fuzz target's.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "common/common_util.h"
#include "common/func_trace.h"
#include "common/log_file_sink.h"
#include "common/log_retention.h"
#include "common/logger.h"
#include "modem/mbn_winrt_helper.h"
#include "notebook/scenario/scenario_reader.h"
#include "notebook/story/log_files.h"
#include "platform/mobile_broadband.h"
#include "platform/platform.h"
#include "story_support.h"

namespace nuvelta::test {
namespace {

namespace fs = std::filesystem;

// What `body` logs as the only thread of a process, without times.
std::string LoggedBy(const std::function<void()>& body, const std::string& notebook = "{}") {
  const TemporaryFolder disk;
  // Without log retention, whose lines would come in between.
  const Scenario scenario =
      Inline("{'faults': [{'call': 'StartDetachedThread'}], 'notebook': " + notebook + "}");
  virtual_notebook::VirtualMachine(scenario, story::ServiceProgram(), {.disk = disk.Path()})
      .RunProcess([&] {
        CLogger::GetInstance().InitLogger();
        body();
      });
  const Told told{.report = {}, .log = story::ReadLog(scenario, disk.Path())};
  std::string text;
  for (const Record& record : told.Records()) text += record.text + "\n";
  return text;
}

// Logs two seconds after the message before, so that no pause keeps it out.
struct Sink {
  void Log(const std::string& text, std::chrono::milliseconds after = std::chrono::seconds(2)) {
    time += after;
    sink.log(spdlog::details::log_msg(time, {}, "", spdlog::level::info, text));
    sink.flush();
  }
  LogFileSink sink;
  spdlog::log_clock::time_point time = spdlog::log_clock::now();
};

TEST(LogFile, GoesOnAfterARotationThatFailed) {
  const TemporaryFolder disk;
  const auto folder = disk.Path() / "log", file = folder / "a.log", away = disk.Path() / "away";
  const std::string longer(600, 'a'), shorter(100, 'b');
  std::string lost;
  Sink log{.sink{file.string(), 1000, 3, [&](const std::string& why) { lost = why; }}};
  log.sink.set_pattern("%v");
  log.Log(longer);
  // The old name is taken: the library gives the old lines up, but no new one.
  fs::create_directories(folder / "a.1.log/inside");
  log.Log(longer);
  EXPECT_LINES(story::ReadFile(file), longer + "\n");
  // No file can be had at all; short lines would still fit into the one that was closed.
  fs::rename(folder, away);
  std::ofstream{folder} << "no folder";
  EXPECT_EQ(lost, "");
  log.Log(longer);
  EXPECT_NE(lost.find(file.string()), std::string::npos) << lost;
  log.Log(shorter);
  fs::remove(folder);
  fs::rename(away, folder);
  log.Log(shorter, LogFileSink::kPause / 2);
  log.Log(shorter);
  EXPECT_LINES(story::ReadFile(file), longer + "\n" + shorter + "\n");
}

TEST(Logger, OpensOneFileASecond) {
  // Both processes begin within one second; the second one appends.
  const Told told = Tell(Inline(
      "{'events': [{'do': 'start'}, {'at': 0.2, 'do': 'kill'}, {'at': 0.5, 'do': 'start'}]}"));
  EXPECT_EQ(told.Count("NService start"), 2U);
  EXPECT_EQ(told.Count("add log file[2]"), 0U);
  EXPECT_EQ(told.Count("NService exit"), 1U);
}

TEST(Logger, RotatesAtOneMegabyteAndLosesNothing) {
  constexpr int kLines = 12000;
  const std::string logged = LoggedBy([] {
    for (int i = 0; i < kLines; ++i) LogInfo("Fn", "%0100d", i);
  });
  std::string expected;
  for (int i = 0; i < kLines; ++i) {
    std::array<char, 128> line{};
    std::snprintf(line.data(), line.size(), "i :   %0100d\n", i);
    expected += line.data();
  }
  EXPECT_LINES(logged, expected);
}

TEST(Logger, GoesOnWithoutALogWhenTheFileCannotBeOpened) {
  const Told told =
      Tell(Inline("{'faults': [{'call': '_mkdir', 'count': 'always'}],"
                  "'notebook': {'environment': {'programdata': 'C:\\\\Nowhere'}}}"));
  EXPECT_TRUE(told.report.Behaved());
  EXPECT_EQ(told.report.radio_after, 1);
}

TEST(FuncTrace, WritesAPairOfTheThread) {
  EXPECT_LINES(LoggedBy([] {
                 const CFuncTrace outer("A::a");
                 const CFuncTrace inner("B::b");
               }),
               "h : + A::a\nh : + B::b\nh : - B::b\nh : - A::a\n");
}

TEST(Retention, JudgesTheExactLimits) {
  const auto judge = [](int64_t total, double age) {
    const RetentionVerdict verdict = JudgeOldest(total, age);
    return std::string(verdict.keep ? "k" : "") + (verdict.too_large ? "l" : "") +
           (verdict.too_old ? "o" : "");
  };
  const std::vector<std::tuple<int64_t, double, const char*>> cases{
      {104857599, 7775999, "k"},
      {104857600, 7775999, ""},
      {104857601, 7775999, "l"},
      {104857599, 7776000, ""},
      {104857599, 7776001, "o"},
      {104857601, 7776001, "lo"},
      {0, -5, "k"},
  };
  for (const auto& [total, age, expected] : cases) EXPECT_EQ(judge(total, age), expected) << total;
  EXPECT_EQ(FileTimeToSeconds(116444736000000000), 0);
  EXPECT_EQ(FileTimeToSeconds(116444736019999999), 1);
}

TEST(Retention, VisitsOldLargeAndLastNamedFilesFirst) {
  LogFileSet set{{1, 5, "b"}, {1, 5, "a"}, {1, 6, "a"}, {2, 1, "a"}, {1, 5, "ab"}, {1, 5, "a"}};
  std::string order;
  for (const auto& file : set) {
    order += std::to_string(int(file.age)) + std::to_string(file.size) + file.name + " ";
  }
  EXPECT_EQ(order, "21a 16a 15b 15ab 15a ");
}

// The folder holds the limit exactly; a locked file counts as freed; a file for
// which both reasons hold advances the counter twice; other names are left alone.
TEST(Retention, TellsWhatItDeletesAndWhy) {
  constexpr const char* kBecauseSize = "because dwLogFolderSize";
  const auto tell = [](const std::string& logs) {
    return Tell(Inline("{'notebook': {'old_logs': [" + logs + "]}}")).Matching("e :   DeleteFile");
  };
  const Told exact =
      Tell(Inline("{'notebook': {'old_logs': ["
                  "{'age_days': 2, 'size_bytes': 52428800},"
                  "{'age_days': 1, 'size_bytes': 52428800}]}}"));
  EXPECT_EQ(exact.Count(kBecauseSize), 0U);
  EXPECT_EQ(exact.Count("dwLogFolderSize: 50.000 MB ,max_size  = 100.000 MB ;item.time_diff = "
                        "1.00000 day ,max_diff = 90.00000 day ,break"),
            1U);
  const Told both =
      Tell(Inline("{'notebook': {'old_logs': ["
                  "{'age_days': 100, 'size_mb': 99},{'age_days': 95, 'size_mb': 1},"
                  "{'age_days': 1, 'size_mb': 30}]}}"));
  EXPECT_EQ(both.Count("; delete log file[1] (") + both.Count("; delete log file[2] (") +
                both.Count("; delete log file[3] ("),
            3U);
  EXPECT_EQ(both.Count("dwLogFolderSize: 30.000 MB"), 1U);
  EXPECT_EQ(
      Tell(Inline("{'notebook': {'old_logs': ["
                  "{'name': 'nuvelta_maservice_monitor_x.txt', 'age_days': 91, 'size_mb': 99},"
                  "{'name': 'x.log', 'age_days': 91, 'size_mb': 99}]}}"))
          .Count("dwLogFolderSize: 0.000 MB"),
      1U);
  EXPECT_LINES(tell("{'name': 'nuvelta_maservice_monitor_x.log', 'age_days': 91, 'size_mb': 1,"
                    " 'in_use': true}"),
               "e :   DeleteFile C:\\ProgramData\\Nuvelta Wireless Inc\\MAService\\HX2208GW\\"
               "nuvelta_maservice_monitor_x.log fail,error code 32\n");
}

TEST(RegistrySwitches, FollowTheirTable) {
  const std::string key = "'SOFTWARE\\\\Nuvelta Wireless Inc\\\\MAService'";
  const std::string binary = "{'type': 'REG_BINARY', 'hex': '01'}";
  const std::string absent = "NOT find reg REG_KEY_NAME_DISABLE_VERIFY_OLD ";
  struct Row {
    std::string values;
    bool disabled;
    const char* line;  // one that must be there
  };
  const std::vector<Row> rows{
      {"", false, "NOT find reg REG_KEY_NAME_DISABLE_VERIFY \n"},
      {"'SupportVerifyPlatform': 0, 'IsDisableVerify': 2", true, "find reg value is 0,return true"},
      {"'SupportVerifyPlatform': 256", true, "RegQueryValueEx success, ret = 0"},
      {"'SupportVerifyPlatform': 1, 'IsDisableVerify': 1", true,
       "h : - CommonUtil::IsDisableVerify"},
      {"'IsDisableVerify': 257", true, "find reg value is 1,return true"},
      {"'IsDisableVerify': 2", false, "RegQueryValueEx success, ret = 2"},
      {"'IsDisableVerify': '1'", false,
       "e :   RegQueryValueEx success,but dwType ==  REG_DWORD 0 ;cbData = 4,ERROR code = "},
      {"'IsDisableVerify': {'type': 'REG_DWORD', 'hex': ''}", false,
       "dwType ==  REG_DWORD 1 ;cbData = 0,"},
      {"'SupportVerifyPlatform': " + binary, false,
       "NOT find reg REG_KEY_NAME_DISABLE_VERIFY_OLD "},
  };
  for (const Row& row : rows) {
    bool disabled = false;
    const std::string logged = LoggedBy([&] { disabled = CommonUtil::IsDisableVerify(); },
                                        "{'registry': {" + key + ": {" + row.values + "}}}");
    EXPECT_EQ(disabled, row.disabled) << row.values;
    EXPECT_NE(logged.find(row.line), std::string::npos) << row.values << logged;
    EXPECT_EQ(logged.find("h : - CommonUtil::IsDisableVerify") != std::string::npos, row.disabled);
    EXPECT_EQ(logged.find("h : + CommonUtil::IsDisableVerify"), std::string::npos);
  }
}

using platform::WatcherStatus;

// Answers one status after the other.
struct StatusWatcher final : platform::AccountWatcher {
  int64_t AccountAdded(Handler /*handler*/) override { return 1; }
  int64_t AccountRemoved(Handler /*handler*/) override { return 2; }
  int64_t EnumerationCompleted(Handler /*handler*/) override { return 3; }
  WatcherStatus Status() override { return statuses.at(asked++); }
  void Start() override { ++started; }
  std::vector<WatcherStatus> statuses;
  size_t asked = 0;
  int started = 0;
};
struct OneWatcher final : platform::MobileBroadband {
  std::shared_ptr<platform::Modem> GetDefault() override { return nullptr; }
  std::shared_ptr<platform::DataWriter> CreateDataWriter() override { return nullptr; }
  std::shared_ptr<platform::AccountWatcher> CreateAccountWatcher() override { return watcher; }
  std::shared_ptr<StatusWatcher> watcher = std::make_shared<StatusWatcher>();
};

TEST(AccountWatcher, IsStartedUnlessItRuns) {
  const auto play = [](std::vector<WatcherStatus> statuses) {
    OneWatcher broadband;
    broadband.watcher->statuses = std::move(statuses);
    const std::string logged = LoggedBy([&] {
      const platform::Platform& os = platform::Os();
      platform::Platform changed = os;
      changed.mobile_broadband = &broadband;
      platform::Install(&changed);
      CMbnWinRtHelper::GetInstance().Init(nullptr);
      platform::Install(&os);
    });
    EXPECT_EQ(broadband.watcher->asked, broadband.watcher->statuses.size());
    return std::to_string(broadband.watcher->started) + logged.substr(logged.find("i :   Watcher"));
  };
  const std::string exits =
      "h : - CMbnWinRtHelper::StartMobileBroadbandAccountWatcher\nh : - CMbnWinRtHelper::Init\n";
  const std::string runs = "0i :   Watcher is already started.\n" + exits;
  const std::string starts = "1i :   Watcher is started successfully.\n" + exits;
  EXPECT_LINES(play({WatcherStatus::kStarted}), runs);
  EXPECT_LINES(play({WatcherStatus::kCreated, WatcherStatus::kEnumerationCompleted}), runs);
  for (const auto idle :
       {WatcherStatus::kCreated, WatcherStatus::kStopped, WatcherStatus::kAborted})
    EXPECT_LINES(play({idle, idle}), starts);
}

}  // namespace
}  // namespace nuvelta::test
