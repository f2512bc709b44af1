// nuvelta_counts CASE N [SIZE]: does one thing N times, each inside the function
// Measured, so that a tool that counts instructions can count those alone. What is
// counted is the calling thread's work; `figures` reads the counts.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <new>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "auth/systeminfo.h"
#include "bench_support.h"
#include "common/ctask.h"
#include "common/func_trace.h"
#include "common/log_folder.h"
#include "common/log_retention.h"
#include "common/logger.h"
#include "lives/engine_view.h"
#include "notebook/scenario/scenario_reader.h"
#include "notebook/story/story.h"
#include "plain_firmware.h"
#include "platform/platform.h"
#include "tasks/task_manager.h"

namespace nuvelta::bench {

// A name of its own in every build, and never inlined.
[[gnu::noinline]] void Measured(const std::function<void()>& operation) {
  operation();
  asm volatile("" ::: "memory");
}

namespace {

// A task that only waits in the queue.
class QueuedTask final : public CTask {
 public:
  explicit QueuedTask(int32_t type) : m_type(type) { iRetryTimes = 30; }
  bool doJob(bool* /*pbRetry*/) override { return true; }
  const char* getTaskName() override { return "QueuedTask"; }
  int32_t getTaskTypeId() override { return m_type; }

 private:
  int32_t m_type;
};

double Nanoseconds(const std::function<void()>& operation) {
  const auto begin = std::chrono::steady_clock::now();
  operation();
  return std::chrono::duration<double, std::nano>(std::chrono::steady_clock::now() - begin).count();
}

double Median(std::vector<double> values) {
  std::ranges::sort(values);
  return values[values.size() / 2];
}

CTask* NewTask(int32_t type) { return new (std::nothrow) QueuedTask(type); }

void Repeat(long times, const std::function<void()>& operation) {
  for (long i = 0; i < times; ++i) Measured(operation);
}

void WithLogger(const std::function<void()>& body) {
  RunInProcess([&] {
    CLogger::GetInstance().InitLogger();
    body();
  });
}

void WriteLog(long times, long /*size*/) {
  WithLogger([&] {
    int number = 0;
    Repeat(times, [&] { LogInfo("CTaskManager::addTask", "list size = %d", ++number); });
  });
}

void TracePair(long times, long /*size*/) {
  WithLogger([&] { Repeat(times, [] { const CFuncTrace trace("CTaskManager::addTask"); }); });
}

// A queue of `size` tasks of one priority. Added one by one, a hundred thousand
// would be compared five thousand million times.
std::set<TaskElement>& FilledQueue(CTaskManager& manager, long size) {
  TaskElement level;
  for (long i = 1; i <= size; ++i) level.lstTask.push_back(NewTask(static_cast<int32_t>(i)));
  std::set<TaskElement>& levels = explore::Levels(manager);
  levels.insert(std::move(level));
  return levels;
}

// A task that the queue holds at its end already.
void MergeTask(long times, long size) {
  WithLogger([&] {
    CTaskManager& manager = *CTaskManager::GetTaskManagerInstance();
    FilledQueue(manager, size);
    Repeat(times, [&] { manager.addTask(NewTask(static_cast<int32_t>(size))); });
  });
}

// What a merge would cost more if it copied the level out of the queue.
void CopyLevel(long times, long size) {
  WithLogger([&] {
    std::set<TaskElement>& levels = FilledQueue(*CTaskManager::GetTaskManagerInstance(), size);
    Repeat(times, [&] {
      TaskElement level = *levels.begin();
      levels.erase(levels.begin());
      levels.insert(std::move(level));
    });
  });
}

void ReadSmbios(long times, long /*size*/) {
  WithLogger([&] {
    PlainFirmware firmware(FourKilobytes());
    const platform::Platform& os = platform::Os();
    platform::Platform plain = os;
    plain.firmware = &firmware;
    platform::Install(&plain);
    Repeat(times, [] { const Systeminfo info; });
    platform::Install(&os);
  });
}

// Whole stories; the job in them is the service's own function. The modem is there
// from the start, so that each has one job only, which succeeds; the figures are
// divided by their number.
void HealthyJob(long times, long /*size*/) {
  const TemporaryFolder disk;
  const auto scenario = virtual_notebook::ReadScenarioText(
      R"({"title": "A healthy job", "events": [{"at": 0, "do": "start"}]})", "healthy job", ".");
  for (long i = 0; i < times; ++i) {
    const auto report = story::Play(scenario, {.disk = disk.Path()});
    if (report.commands.size() != 2 || report.radio_after != 1 || !report.Behaved()) std::abort();
  }
}

// Log retention over 10,000 files of a fresh disk, in nanoseconds, and `find`
// listing the same.
std::pair<double, double> RetainOnce() {
  const TemporaryFolder disk;
  virtual_notebook::Scenario scenario;
  scenario.notebook = virtual_notebook::DefaultNotebook();
  virtual_notebook::VirtualMachine machine(scenario, story::ServiceProgram(),
                                           {.disk = disk.Path()});
  const std::string folder = "C:\\Logs";
  const std::filesystem::path host = machine.HostPath(folder);
  std::filesystem::create_directories(host);
  for (int i = 0; i < 10000; ++i) {
    std::ofstream(host / (kLogFilePrefix + std::to_string(i) + kLogFileSuffix));
  }
  const std::string find = "find '" + host.string() + "' -name '" + kLogFilePrefix + "*" +
                           kLogFileSuffix + "' -printf '%s %T@ %f\\n' > /dev/null";
  std::pair<double, double> times;
  machine.RunProcess([&] {
    CLogger::GetInstance().InitLogger();
    times.second = Nanoseconds([&] {
      if (std::system(find.c_str()) != 0) std::abort();
    });
    times.first = Nanoseconds([&] { DeleteFileWhileExceedMaxSizeAndTime(folder); });
  });
  return times;
}

// Prints the medians of both.
void Retention(long times, long /*size*/) {
  std::vector<double> ours;
  std::vector<double> theirs;
  for (long i = 0; i < times; ++i) {
    const auto [retention, find] = RetainOnce();
    ours.push_back(retention);
    theirs.push_back(find);
  }
  std::printf("%.0f %.0f\n", Median(ours), Median(theirs));
}

// How often the process's threads have waited so far.
long Waits() {
  long waits = 0;
  for (const auto& thread : std::filesystem::directory_iterator("/proc/self/task")) {
    std::ifstream status(thread.path() / "status");
    for (std::string word; status >> word;) {
      if (long count = 0; word == "voluntary_ctxt_switches:" && status >> count) waits += count;
    }
  }
  return waits;
}

// Prints how often the threads of an open log, on which nothing is written, wake up
// in `seconds`.
void IdleWakeUps(long seconds, long /*size*/) {
  WithLogger([&] {
    std::this_thread::sleep_for(std::chrono::seconds(1));
    const long before = Waits();
    std::this_thread::sleep_for(std::chrono::seconds(seconds));
    std::printf("%ld\n", Waits() - before - 1);  // but for the sleep above
  });
}

// The table as a tool on a dump expects it, on standard output.
void DumpSmbios(long /*times*/, long /*size*/) {
  const std::vector<uint8_t> dump = SmbiosDump(FourKilobytes());
  std::fwrite(dump.data(), 1, dump.size(), stdout);
}

}  // namespace
}  // namespace nuvelta::bench

int main(int argc, char** argv) {
  using namespace nuvelta::bench;
  const std::map<std::string, void (*)(long, long)> cases{
      {"write_log", WriteLog},   {"trace_pair", TracePair},   {"merge", MergeTask},
      {"copy_level", CopyLevel}, {"read_smbios", ReadSmbios}, {"healthy_job", HealthyJob},
      {"retention", Retention},  {"dump_smbios", DumpSmbios}, {"idle_wake_ups", IdleWakeUps}};
  const auto found = argc >= 3 ? cases.find(argv[1]) : cases.end();
  if (found == cases.end()) {
    std::fprintf(stderr, "usage: nuvelta_counts CASE N [SIZE], CASE one of:");
    for (const auto& [name, function] : cases) std::fprintf(stderr, " %s", name.c_str());
    std::fprintf(stderr, "\n");
    return 2;
  }
  found->second(std::strtol(argv[2], nullptr, 10),
                argc > 3 ? std::strtol(argv[3], nullptr, 10) : 0);
  return 0;
}
