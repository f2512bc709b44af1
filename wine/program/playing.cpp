#include "wine/program/playing.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <optional>
#include <stdexcept>

#include "notebook/model/log_names.h"
#include "notebook/program/log_follower.h"
#include "notebook/story/interruption.h"
#include "notebook/story/log_files.h"
#include "wine/program/journal_report.h"
#include "wine/story/places.h"

namespace nuvelta::wine_notebook {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using virtual_notebook::Scenario;

namespace {

constexpr auto kStoryPatience = 900s;
constexpr std::string_view kLogsLine = "logs ";  // the driver's, see its main

// Now, as the names of log files that begin now have it.
std::string LogStampNow() {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  return virtual_notebook::LogStampOf(local);
}

// Follows the driver to its end. Answers the log folder.
fs::path Follow(ChildProcess& driver, const WinePrefix& prefix,
                const std::function<void(const fs::path&)>& on_logs) {
  fs::path log_folder;
  std::string last_words;
  const auto end = std::chrono::steady_clock::now() + kStoryPatience;
  for (bool runs = true; runs;) {
    runs = driver.Wait(20ms);
    for (const std::string& line : driver.Lines()) {
      if (!line.starts_with(kLogsLine)) {
        last_words = line;
      } else if (log_folder.empty()) {
        log_folder = prefix.HostPath(line.substr(kLogsLine.size()));
        on_logs(log_folder);
      }
    }
    story::ThrowIfInterrupted();
    if (std::chrono::steady_clock::now() > end) {
      throw std::runtime_error("the story has not ended after 900 s of real time");
    }
  }
  if (driver.ExitCode() != 0 || log_folder.empty()) {
    throw std::runtime_error("the story could not be played: " +
                             (last_words.empty()
                                  ? "the driver ended with " + std::to_string(driver.ExitCode())
                                  : last_words));
  }
  return log_folder;
}

WineStory PlayOnce(WinePrefix& prefix, const std::string& file, const Scenario& scenario,
                   const std::function<void(const std::string&)>& print) {
  prefix.SetTimeZone(scenario.time_zone);
  setenv("TZ", scenario.time_zone.c_str(), 1);
  tzset();
  const std::string begin = LogStampNow();
  WineStory story;
  auto driver = prefix.RunDriver(
      {prefix.HasPackage() ? "play-installed" : "play", "Z:" + fs::absolute(file).string()});
  try {
    std::optional<story::LogFollower> follower;
    story.log_folder = Follow(*driver, prefix, [&](const fs::path& folder) {
      if (print) follower.emplace(folder, begin, print);
    });
  } catch (...) {
    driver.reset();
    prefix.Repair();
    throw;
  }
  story.journal = wine::ReadJournal(prefix.InstallFolder() / wine::kJournalFile);
  story.report = ReportOf(scenario, story.journal);
  const std::vector<fs::path> logs = story::LogFilesSince(story.log_folder, begin);
  for (const fs::path& log : logs) story.log += story::ReadFile(log);
  story.why = story::WhyOf(logs);
  return story;
}

// Wine's manager may fail to start a process at all, with ERROR_INTERNAL_ERROR. It was
// seen on a busy machine; the driver says so only when the service has not begun.
bool IsManagersFault(const std::exception& error) {
  return std::string_view(error.what()).ends_with("the service cannot be started: error 1359");
}

}  // namespace

WineStory PlayUnderWine(WinePrefix& prefix, const std::string& file, const Scenario& scenario,
                        const std::function<void(const std::string&)>& print) {
  try {
    return PlayOnce(prefix, file, scenario, print);
  } catch (const std::runtime_error& error) {
    if (!IsManagersFault(error)) throw;
  }
  std::fprintf(stderr, "Wine's service manager failed (error 1359); the story begins again\n");
  prefix.End();
  return PlayOnce(prefix, file, scenario, print);
}

}  // namespace nuvelta::wine_notebook
