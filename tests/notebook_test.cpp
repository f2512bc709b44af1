// The parts of the virtual notebook, each alone.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iomanip>
#include <sstream>

#include "notebook/machine/code_page.h"
#include "notebook/machine/virtual_files.h"
#include "notebook/machine/virtual_registry.h"
#include "notebook/model/control_rules.h"
#include "notebook/model/delay_plan.h"
#include "notebook/model/modem_model.h"
#include "notebook/model/unicode.h"
#include "notebook/story/temporary_folder.h"

namespace nuvelta::test {
namespace {

using namespace virtual_notebook;
using namespace std::chrono_literals;
using Bytes = std::vector<uint8_t>;

constexpr Nanoseconds kStart = 1'000'000'000s;

struct Desk {
  Scheduler scheduler{Scheduler::Mode::kDeterministic, 1, kStart};
  FaultPlan faults{{}};
  Context context{scheduler, faults};
};

TEST(FaultPlan, FailsTheCallsThatItNames) {
  FaultPlan plan({{.call = "SetEvent", .nth = 2, .count = 2, .code = 5},
                  {.call = "SetEvent", .nth = 5, .code = 6},
                  {.call = "_mkdir", .nth = 3, .count = 0, .code = 7},
                  {.call = "HeapAlloc", .nth = 4, .code = 8},
                  {.call = "LocalAlloc", .kind = Fault::Kind::kBadAlloc, .code = 9}});
  const auto codes = [&](const char* call, int times) {
    std::string text;
    for (int i = 0; i < times; ++i) {
      const auto fault = plan.Count(call);
      text += fault ? std::to_string(fault->code) : "-";
    }
    return text;
  };
  EXPECT_EQ(codes("SetEvent", 7), "-55-6--");
  EXPECT_EQ(codes("_mkdir", 6), "--7777");
  EXPECT_EQ(codes("HeapAlloc", 3), "---");

  std::string fired;
  for (const FiredFault& fault : plan.Fired()) {
    fired += fault.call + std::to_string(fault.nth) + "=" + std::to_string(fault.code) + " ";
  }
  EXPECT_EQ(fired, "SetEvent2=5 SetEvent3=5 SetEvent5=6 _mkdir3=7 _mkdir4=7 _mkdir5=7 _mkdir6=7 ");
  const auto rest = plan.NotFired();
  ASSERT_EQ(rest.size(), 2U);
  EXPECT_EQ(rest[0].call + rest[1].call, "HeapAllocLocalAlloc");
}

TEST(DelayPlan, AddsUpTheDelaysOfACall) {
  using std::chrono::milliseconds;
  DelayPlan plan({{.call = "SetEvent", .nth = 2, .count = 2, .late = milliseconds(5)},
                  {.call = "SetEvent", .nth = 3, .count = 0, .late = milliseconds(40)}});
  EXPECT_EQ(plan.Count("ResetEvent"), Duration());
  for (const int expected : {0, 5, 45, 40, 40}) {
    EXPECT_EQ(plan.Count("SetEvent"), milliseconds(expected));
  }
}

// The table of states of ControlServiceEx, and who may send what: the state, the accepted
// controls, whether a stop has been sent; then the controls with the manager's answers, "ok"
// for one that is delivered.
constexpr const char* kControlTable = R"(
0 0x81 0  1=1062 4=1062 200=1062 14=0 5=0 127=87
1 0x81 0  1=1062 2=1062 14=0
2 0    0  1=1052 2=1061 4=1061 128=1061 14=0
2 0x81 0  1=ok 4=1061 14=ok
4 0x81 0  1=ok 2=1052 3=1052 4=ok 5=0 6=1052 10=1052 11=0 12=0 13=0 14=ok 15=0 16=0 17=87 32=0 64=0 128=ok 255=ok
4 0xF7E 0 1=1052 2=ok 3=ok 5=ok 6=ok 7=ok 10=ok 11=0 12=ok 13=ok 14=0 15=ok 16=ok 32=ok 64=ok
4 0x81 1  1=1061 4=1061 14=0
6 0x81 0  1=ok 3=1052 4=ok 14=ok
3 0x81 1  1=1061 4=1061 200=1061 14=0
)";

TEST(ControlRules, RefuseWhatTheManagerWouldRefuse) {
  std::istringstream rows(kControlTable + 1);
  int answers = 0;
  for (std::string row; std::getline(rows, row);) {
    std::istringstream cells(row);
    ManagedService service;
    cells >> service.status.dwCurrentState >> std::setbase(0) >>
        service.status.dwControlsAccepted >> std::setbase(10) >> service.stop_sent;
    for (std::string cell; cells >> cell; ++answers) {
      const size_t equals = cell.find('=');
      const auto error = RefusalOf(static_cast<uint32_t>(std::stoul(cell)), service);
      EXPECT_EQ(error ? std::to_string(*error) : "ok", cell.substr(equals + 1))
          << "control " << cell.substr(0, equals) << " in " << row;
    }
  }
  EXPECT_EQ(answers, 61);
}

TEST(ModemModel, KeepsWhatItIsTold) {
  ModemModel modem({});
  const auto query = [&] { return modem.Execute(false, 1, {0}, kStart).data; };
  EXPECT_EQ(query(), (Bytes{4, 0, 0, 0}));
  EXPECT_EQ(modem.Execute(true, 1, {1, 2, 0, 0x80}, kStart).kind, Answer::Kind::kHealthy);
  EXPECT_EQ(query(), (Bytes{1, 2, 0, 0x80}));
  EXPECT_EQ(modem.Description().radio, static_cast<int32_t>(0x80000201));

  // What it does not know changes nothing.
  const ModemReply unknown[] = {modem.Execute(true, 1, {1, 0, 0}, kStart),
                                modem.Execute(true, 2, {1, 0, 0, 0}, kStart),
                                modem.Execute(false, 1, {0, 0}, kStart)};
  for (const ModemReply& reply : unknown) {
    EXPECT_EQ(reply.kind, Answer::Kind::kStatus);
    EXPECT_EQ(reply.code, 9U);
    EXPECT_EQ(reply.after, 20ms);
  }
  EXPECT_EQ(query(), (Bytes{1, 2, 0, 0x80}));

  Action::ModemChange change;
  change.radio = 0;
  change.latency = 3s;
  modem.Apply(change);
  EXPECT_EQ(modem.Execute(false, 1, {0}, kStart + 5s).after, 3s);
  const auto commands = modem.Commands();
  ASSERT_EQ(commands.size(), 8U);
  EXPECT_EQ(commands[1].radio_before, 4);
  EXPECT_EQ(commands[1].radio_after, commands[2].radio_before);
  EXPECT_EQ(commands[3].payload, (Bytes{1, 0, 0}));
  EXPECT_EQ(commands[7].at, kStart + 5s);
}

TEST(ModemModel, GivesItsAnswersInOrderAsOftenAsTold) {
  using Kind = Answer::Kind;
  ModemModel modem({.radio = 4,
                    .query = {{.kind = Kind::kStatus, .code = 7, .data = {}, .times = 2},
                              {.kind = Kind::kData, .after = 5s, .data = {1, 2}}},
                    .set = {{.kind = Kind::kHresult, .code = 3, .data = {}, .times = 0}}});
  std::vector<Kind> kinds;
  for (int i = 0; i < 5; ++i) {
    const ModemReply reply = modem.Execute(false, 1, {0}, kStart);
    kinds.push_back(reply.kind);
    EXPECT_EQ(reply.after, i == 2 ? Duration(5s) : Duration(20ms));
    EXPECT_EQ(reply.code, i < 2 ? 7U : 0U);
    EXPECT_EQ(reply.data.size(), i == 2 ? 2U : i > 2 ? 4U : 0U);
  }
  EXPECT_EQ(kinds, (std::vector{Kind::kStatus, Kind::kStatus, Kind::kData, Kind::kHealthy,
                                Kind::kHealthy}));
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(modem.Execute(true, 1, {1, 0, 0, 0}, kStart).kind, Kind::kHresult);
  }
  EXPECT_EQ(modem.Description().radio, 4);
  Action::ModemChange healthy;
  healthy.set.emplace();
  modem.Apply(healthy);
  modem.Execute(true, 1, {1, 0, 0, 0}, kStart);
  EXPECT_EQ(modem.Description().radio, 1);
}

TEST(VirtualRegistry, FindsKeysAndValuesInAnyLetterCase) {
  Desk desk;
  VirtualRegistry registry(desk.context, {{"SOFTWARE\\Vendor\\Beta\\Deep", {}},
                                          {"Software\\Vendor\\alpha", {}},
                                          {"Software\\Vendor2\\Gamma", {}},
                                          {"software\\vendor", {{"Blob", {3, {1, 0xE9, 3}}}}}});
  registry.SetText("SOFTWARE\\VENDOR", "Label", "Caf\u00e9 \u20ac\u7cfb");
  platform::KeyHandle key{};
  EXPECT_EQ(registry.RegOpenKeyExW(u"SOFTWARE\\None", platform::kKeyRead, key), 2U);
  EXPECT_EQ(key, platform::KeyHandle{});
  ASSERT_EQ(registry.RegOpenKeyExW(u"soFTware\\VENDOR", platform::kKeyRead, key), 0U);

  std::array<char, 16> name{};
  std::string names;
  for (uint32_t i = 0; registry.RegEnumKeyExA(key, i, name) == 0; ++i) {
    names.append(name.data()).append(" ");
  }
  EXPECT_EQ(names, "alpha Beta ");
  EXPECT_EQ(registry.RegEnumKeyExA(key, 2, name), platform::kErrorNoMoreItems);
  EXPECT_EQ(registry.RegEnumKeyExA(key, 0, std::span(name).first(5)), 234U);
  platform::KeyHandle below{};
  EXPECT_EQ(registry.RegOpenKeyExA(key, "BETA\\deep", platform::kKeyRead, below), 0U);
  EXPECT_EQ(registry.RegEnumKeyExA(below, 0, name), platform::kErrorNoMoreItems);

  std::array<std::byte, 32> data{};
  uint32_t type = 0;
  uint32_t size = 15;
  EXPECT_EQ(registry.RegQueryValueExW(key, u"LABEL", type, data.data(), size), 234U);
  EXPECT_EQ(size, 16U);
  EXPECT_EQ(data[0], std::byte{});
  EXPECT_EQ(registry.RegQueryValueExW(key, u"label", type, data.data(), size), 0U);
  EXPECT_EQ(type, platform::kRegSz);
  EXPECT_EQ(data[6], std::byte{0xE9});
  const auto narrow = [&](std::string_view value) {
    EXPECT_EQ(registry.RegQueryValueExA(key, value, data.data(), --size), 234U);
    EXPECT_EQ(registry.RegQueryValueExA(key, value, data.data(), size), 0U);
    return std::string(reinterpret_cast<const char*>(data.data()), size);
  };
  EXPECT_EQ(registry.RegQueryValueExA(key, "lAbel", nullptr, size), 0U);
  EXPECT_EQ(narrow("lAbel"), std::string("Caf\xE9 \x80?\0", 8));
  EXPECT_EQ(registry.RegQueryValueExA(key, "BLOB", nullptr, size), 0U);
  EXPECT_EQ(narrow("BLOB"), "\x01\xE9\x03");
  registry.Delete("Software\\Vendor", "LABEL");
  EXPECT_EQ(registry.RegQueryValueExA(key, "Label", nullptr, size), 2U);

  EXPECT_EQ(registry.OpenHandles(), 2U);
  EXPECT_EQ(registry.RegCloseKey(below), 0U);
  EXPECT_EQ(registry.RegCloseKey(below), platform::kErrorInvalidHandle);
  registry.EndProcess();
  EXPECT_EQ(registry.OpenHandles(), 0U);
}

// "name size age-in-seconds" of each file found.
std::string Listing(VirtualFiles& files, const std::string& pattern) {
  platform::FindData data;
  std::string text;
  const auto find = files.FindFirstFileA(pattern, data);
  if (find == platform::InvalidHandle<platform::FindHandle>()) return "none";
  do {
    const auto seconds = static_cast<int64_t>(data.ftLastWriteTime / 10'000'000 - 11'644'473'600);
    text += data.cFileName + " " + std::to_string(data.nFileSizeLow) + " " +
            std::to_string(seconds - kStart / 1s) + "\n";
  } while (files.FindNextFileA(find, data));
  EXPECT_EQ(Scheduler::ThreadWord(), platform::kErrorNoMoreFiles);
  files.FindClose(find);
  return text;
}

TEST(VirtualFiles, ShowsFilesAsTheyWereWhenTheProcessBegan) {
  const story::TemporaryFolder disk;
  Desk desk;
  VirtualFiles files(desk.context, disk.Path());
  const auto write = [&](const std::string& name, const std::string& text) {
    std::ofstream(files.LibraryPath("C:\\Logs\\" + name), std::ios::app) << text;
  };
  const auto error_of_deleting = [&](const std::string& name) {
    return files.DeleteFileA("C:\\Logs\\" + name) ? 0 : Scheduler::ThreadWord();
  };
  desk.scheduler.Spawn("main", 1, [&] {
    EXPECT_EQ(files._mkdir("C:\\"), 0);
    files.PutOldLogs("C:\\Logs",
                     {{.name = "n_kept.log", .age = 1h, .size = 10},
                      {.name = "n_used.log", .age = 2h, .size = 20, .in_use = true}},
                     "n_", ".log");
    files.BeginProcess("C:\\Logs");
    write("n_own.log", "own");
    desk.scheduler.Sleep(100s);
    write("n_kept.log", "more");
    write("other.txt", "x");
    const std::string before = "n_kept.log 10 -3600\nn_own.log 0 0\nn_used.log 20 -7200\n";
    EXPECT_EQ(Listing(files, "C:\\Logs\\N_*.LOG"), before);
    EXPECT_EQ(error_of_deleting("n_own.log"), 32U);
    EXPECT_EQ(error_of_deleting("n_used.log"), 32U);
    EXPECT_EQ(error_of_deleting("n_none.log"), 2U);
    files.EndProcess();

    files.BeginProcess("C:\\Logs");
    EXPECT_EQ(Listing(files, "C:\\Logs\\n_*.log"),
              "n_kept.log 14 100\nn_own.log 3 100\nn_used.log 20 -7200\n");
    EXPECT_EQ(error_of_deleting("n_own.log"), 0U);
    EXPECT_EQ(Listing(files, "C:\\Logs\\n_o*.log"), "none");
    EXPECT_EQ(files.OpenHandles(), 0U);
  });
  desk.scheduler.Run();
  EXPECT_EQ(files.HostPath("C:\\..\\..\\etc\\x"), disk.Path() / "C" / "etc" / "x");
  EXPECT_EQ(files.HostPath("..\\.:./y/./../z"), disk.Path() / "y" / "z");
}

TEST(Unicode, ConvertsBothWaysAndReplacesWhatIsBroken) {
  const std::string utf8 = "a\u00e9\u20ac\U0001F600";
  EXPECT_EQ(Utf16(utf8), u"a\u00e9\u20ac\U0001F600");
  EXPECT_EQ(Utf8(Utf16(utf8)), utf8);
  EXPECT_EQ(Utf16("\xFF"
                  "b\xE4\xB8"),
            u"\uFFFDb\uFFFD\uFFFD");
  EXPECT_EQ(Utf16("\xC0\x80"), u"\uFFFD\uFFFD");
  EXPECT_EQ(Utf8(std::u16string{0xD83D, u'x', 0xDE00}), "\uFFFDx\uFFFD");
  EXPECT_EQ(Utf16Bytes("A\u20ac", 2), (Bytes{'A', 0, 0xAC, 0x20, 0, 0, 0, 0}));
  EXPECT_EQ(Folded("AZ[\u00c9az"), "az[\u00c9az");
}

TEST(CodePage, HoldsEveryByteAndMarksWhatItLacks) {
  std::string bytes(256, '\0');
  for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<char>(i);
  EXPECT_EQ(ToCodePage(FromCodePage(bytes)), bytes);
  EXPECT_EQ(FromCodePage("\x80\x9F\xE9"), u"\u20ac\u0178\u00e9");
  EXPECT_EQ(ToCodePage(u"\u7cfb\u0141x"), "??x");

  Desk desk;
  VirtualText text(desk.context);
  std::array<char, 2> out{};
  EXPECT_EQ(text.WideCharToMultiByte(u"\u20acxy", {}), 3);
  EXPECT_EQ(text.WideCharToMultiByte(u"\u20acxy", out), 0);
  EXPECT_EQ(Scheduler::ThreadWord(), platform::kErrorInsufficientBuffer);
  EXPECT_EQ(text.WideCharToMultiByte(u"\u20acx", out), 2);
  EXPECT_EQ(out[0], '\x80');
}

}  // namespace
}  // namespace nuvelta::test
