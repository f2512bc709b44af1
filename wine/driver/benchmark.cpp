#include "wine/driver/benchmark.h"

#include "wine/driver/win32.h"

#include <tlhelp32.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <fstream>
#include <nlohmann/json.hpp>
#include <optional>
#include <vector>

#include "notebook/scenario/scenario_reader.h"
#include "wine/driver/prefix.h"
#include "wine/driver/service_entry.h"
#include "wine/driver/service_process.h"
#include "wine/story/journal.h"
#include "wine/story/places.h"

namespace nuvelta::wine {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

namespace {

constexpr auto kPatience = 30s;
constexpr DWORD kPatienceMs = 30000;

// A notebook whose modem does not come: the service has work while it is stopped.
constexpr const char* kCyclesStory =
    R"({"title": "Started and stopped", "notebook": {"modem": {"present": false}}})";
constexpr const char* kMeasuredKey = "Nuvelta start times";

struct Measured {
  int failed_starts = 0;
  int failed_stops = 0;
  std::vector<double> start_ms;

  void Count(std::optional<double> time) {
    if (time) {
      start_ms.push_back(*time);
    } else {
      ++failed_starts;
    }
  }
};

nlohmann::ordered_json Spread(std::vector<double> values) {
  if (values.empty()) return nullptr;
  std::ranges::sort(values);
  return {{"median", values[values.size() / 2]},
          {"p95", values[(values.size() - 1) * 95 / 100]},
          {"max", values.back()}};
}

// From the request to RUNNING, in milliseconds; none when it does not come to that.
std::optional<double> TimedStart(const ServiceEntry& service) {
  const auto begin = Clock::now();
  if (service.Start() != ERROR_SUCCESS) return {};
  for (;;) {
    const DWORD state = service.Status().dwCurrentState;
    const auto spent = Clock::now() - begin;
    if (state == SERVICE_RUNNING) return std::chrono::duration<double, std::milli>(spent).count();
    if (state == SERVICE_STOPPED || spent > kPatience) return {};
    Sleep(1);  // or the asking keeps a processor busy
  }
}

// Whether the service ends by itself once it is told to.
bool StopAndAwaitEnd(const ServiceEntry& service) {
  const auto process = ServiceProcess::Open(service.Status().dwProcessId);
  if (!process) return false;
  const bool ended = service.Stop() == ERROR_SUCCESS && process->AwaitEnd(kPatienceMs);
  if (!ended) process->Kill();
  return ended && process->ExitCode() == 0;
}

void Kill(const ServiceEntry& service) {
  const auto process = ServiceProcess::Open(service.Status().dwProcessId);
  if (process) process->Kill();
}

// The process may end before the manager has taken note of its last report.
bool AwaitStopped(const ServiceEntry& service) {
  const auto begin = Clock::now();
  while (service.Status().dwCurrentState != SERVICE_STOPPED) {
    if (Clock::now() - begin > kPatience) return false;
    Sleep(1);
  }
  return true;
}

int CountProcesses(const std::wstring& executable) {
  const Handle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
  PROCESSENTRY32W process{};
  process.dwSize = sizeof process;
  int count = 0;
  for (BOOL more = Process32FirstW(snapshot.get(), &process); more != FALSE;
       more = Process32NextW(snapshot.get(), &process)) {
    if (_wcsicmp(process.szExeFile, executable.c_str()) == 0) ++count;
  }
  return count;
}

// A service entry that goes with the object.
class TemporaryEntry {
 public:
  TemporaryEntry(std::string key, const fs::path& executable) : m_key(std::move(key)) {
    ServiceEntry::Remove(m_key);
    m_entry.emplace(m_key, executable);
  }
  ~TemporaryEntry() {
    m_entry.reset();
    ServiceEntry::Remove(m_key);
  }
  TemporaryEntry(const TemporaryEntry&) = delete;
  TemporaryEntry& operator=(const TemporaryEntry&) = delete;
  const ServiceEntry& Get() const { return *m_entry; }

 private:
  const std::string m_key;
  std::optional<ServiceEntry> m_entry;
};

}  // namespace

std::string MeasureCycles(int count) {
  const fs::path folder = InstallFolder();
  const fs::path file = folder / "cycles.json";
  std::ofstream(file, std::ios::binary) << kCyclesStory << "\n";
  const virtual_notebook::Scenario scenario = virtual_notebook::ReadScenarioFile(file.string());
  Measured measured;
  {
    const StoryInPrefix story(scenario, file);
    const ServiceEntry service(scenario.notebook.service_key, folder / kServiceFile);
    for (int i = 0; i < count; ++i) {
      // Each process begins the story anew.
      fs::remove(folder / kJournalFile);
      Append(folder / kJournalFile, {.at = {}, .what = EventPlayed{}});
      measured.Count(TimedStart(service));
      if (!StopAndAwaitEnd(service) || !AwaitStopped(service)) ++measured.failed_stops;
    }
  }
  fs::remove(file);
  const nlohmann::ordered_json json{
      {"cycles", count},
      {"failed_starts", measured.failed_starts},
      {"failed_stops", measured.failed_stops},
      {"leftover_processes", CountProcesses(fs::path(kServiceFile).wstring())},
      {"start_ms", Spread(measured.start_ms)}};
  return json.dump();
}

std::string MeasureStarts(const fs::path& executable, const fs::path& other, int count) {
  std::array<Measured, 2> measured;
  const std::array<fs::path, 2> executables{executable, other};
  // In turn, for the machine's own speed drifts.
  for (int i = 0; i < count; ++i) {
    for (size_t which = 0; which < executables.size(); ++which) {
      const TemporaryEntry entry(kMeasuredKey, executables[which]);
      measured[which].Count(TimedStart(entry.Get()));
      // What the executable does without its hardware is not what is measured.
      Kill(entry.Get());
    }
  }
  const nlohmann::ordered_json json{
      {"starts", count},
      {"failed_starts", measured[0].failed_starts + measured[1].failed_starts},
      {"start_ms", Spread(measured[0].start_ms)},
      {"other_start_ms", Spread(measured[1].start_ms)}};
  return json.dump();
}

void RemoveMeasured() { ServiceEntry::Remove(kMeasuredKey); }

}  // namespace nuvelta::wine
