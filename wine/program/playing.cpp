#include "wine/program/playing.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <utility>

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
// Lines of the driver's, see its main.
constexpr std::string_view kLogsLine = "logs ";
constexpr std::string_view kSupportLine = "support ended with ";

// Now, as the names of log files that begin now have it.
std::string LogStampNow() {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  return virtual_notebook::LogStampOf(local);
}

// Follows the driver to its end. Answers what else it has printed.
std::vector<std::string> Follow(ChildProcess& driver, const WinePrefix& prefix,
                                const std::function<void(const fs::path&)>& on_logs) {
  bool has_logs = false;
  std::vector<std::string> told;
  const auto end = std::chrono::steady_clock::now() + kStoryPatience;
  for (bool runs = true; runs;) {
    runs = driver.Wait(20ms);
    for (const std::string& line : driver.Lines()) {
      if (!line.starts_with(kLogsLine)) {
        told.push_back(line);
      } else if (!std::exchange(has_logs, true)) {
        on_logs(prefix.HostPath(line.substr(kLogsLine.size())));
      }
    }
    story::ThrowIfInterrupted();
    if (std::chrono::steady_clock::now() > end) {
      throw std::runtime_error("the story has not ended after 900 s of real time");
    }
  }
  if (driver.ExitCode() != 0 || !has_logs) {
    throw std::runtime_error("the story could not be played: " +
                             (told.empty()
                                  ? "the driver ended with " + std::to_string(driver.ExitCode())
                                  : told.back()));
  }
  return told;
}

WineStory PlayOnce(WinePrefix& prefix, const std::vector<std::string>& order,
                   const Scenario& scenario, const std::function<void(const std::string&)>& print) {
  prefix.SetTimeZone(scenario.time_zone);
  setenv("TZ", scenario.time_zone.c_str(), 1);
  tzset();
  const std::string begin = LogStampNow();
  WineStory story;
  auto driver = prefix.RunDriver(order);
  try {
    std::optional<story::LogFollower> follower;
    story.told = Follow(*driver, prefix, [&](const fs::path& folder) {
      story.log_folder = folder;
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

// Wine's manager may fail to start a process at all, with ERROR_INTERNAL_ERROR, or have waited
// for it in vain, with ERROR_SERVICE_REQUEST_TIMEOUT. Both were seen on a busy machine; the
// driver says so only when the service has not begun.
bool IsManagersFault(const std::exception& error) {
  const std::string_view text = error.what();
  return text.ends_with("the service cannot be started: error 1359") ||
         text.ends_with("the service cannot be started: error 1053");
}

WineStory PlayAgain(WinePrefix& prefix, const std::vector<std::string>& order,
                    const Scenario& scenario,
                    const std::function<void(const std::string&)>& print) {
  try {
    return PlayOnce(prefix, order, scenario, print);
  } catch (const std::runtime_error& error) {
    if (!IsManagersFault(error)) throw;
    std::fprintf(stderr, "Wine's service manager failed; the story begins again: %s\n",
                 error.what());
  }
  prefix.End();
  return PlayOnce(prefix, order, scenario, print);
}

std::string WindowsPath(const std::string& file) { return "Z:" + fs::absolute(file).string(); }

}  // namespace

WineStory PlayUnderWine(WinePrefix& prefix, const std::string& file, const Scenario& scenario,
                        const std::function<void(const std::string&)>& print) {
  return PlayAgain(prefix, {prefix.HasPackage() ? "play-installed" : "play", WindowsPath(file)},
                   scenario, print);
}

Look LookUnderWine(WinePrefix& prefix, const std::string& file, const Scenario& scenario,
                   Moment moment, const std::vector<std::string>& arguments) {
  {
    std::ofstream list(prefix.InstallFolder() / wine::kSupportArguments, std::ios::binary);
    for (const std::string& argument : arguments) list << argument << '\0';
  }
  const WineStory story = PlayAgain(
      prefix, {"support", moment == Moment::kBefore ? "before" : "after", WindowsPath(file)},
      scenario, {});
  const auto line = std::ranges::find_if(
      story.told, [](const std::string& told) { return told.starts_with(kSupportLine); });
  if (line == story.told.end()) throw std::runtime_error("the support program was not run");
  return {.exit_code = std::stoi(line->substr(kSupportLine.size())),
          .output = story::ReadFile(prefix.InstallFolder() / wine::kSupportOutput),
          .errors = story::ReadFile(prefix.InstallFolder() / wine::kSupportErrors),
          .journal = story.journal};
}

}  // namespace nuvelta::wine_notebook
