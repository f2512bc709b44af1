// service_driver: plays a story with the installed service, or measures it. Runs
// under Wine, from the service's folder, for as long as the story lasts: Wine ends
// its services with the last ordinary process.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "notebook/scenario/scenario_reader.h"
#include "wine/driver/benchmark.h"
#include "wine/driver/console_start.h"
#include "wine/driver/old_logs.h"
#include "wine/driver/player.h"
#include "wine/driver/prefix.h"
#include "wine/driver/service_entry.h"
#include "wine/driver/support_run.h"
#include "wine/story/places.h"

namespace {

using namespace nuvelta;
namespace fs = std::filesystem;

constexpr int kDone = 0;
constexpr int kFailed = 1;
constexpr int kMisused = 2;

// How the processes are to crash, one after the other; none when a word is unknown.
std::vector<std::string> Crashes(wchar_t** words, int count) {
  std::vector<std::string> crashes;
  for (const std::wstring word : std::span(words, static_cast<size_t>(count))) {
    for (const char* const how :
         {wine::kCrash, wine::kCrashByOverflow, wine::kHangInMessage, wine::kHangInDump}) {
      if (word == std::wstring(how, how + std::strlen(how))) crashes.emplace_back(how);
    }
  }
  if (crashes.size() != static_cast<size_t>(count)) crashes.clear();
  return crashes;
}

void Play(const fs::path& file, const std::vector<std::string>& crashes, bool installed = false) {
  const virtual_notebook::Scenario scenario = virtual_notebook::ReadScenarioFile(file.string());
  const wine::StoryInPrefix story(scenario, fs::absolute(file), installed);
  bool hangs = false;
  if (!crashes.empty()) {
    std::ofstream requests(wine::InstallFolder() / wine::kCrashRequestFile);
    for (const std::string& how : crashes) {
      requests << how << '\n';
      hangs |= how == wine::kHangInMessage || how == wine::kHangInDump;
    }
  }
  // Tells the host that the prefix is ready, and where to look for the log.
  std::printf("logs %s\n", wine::LogFolder().string().c_str());
  std::fflush(stdout);
  const fs::path folder = wine::InstallFolder();
  const std::string& key = scenario.notebook.service_key;
  wine::Player(
      scenario, folder,
      installed ? wine::ServiceEntry(key) : wine::ServiceEntry(key, folder / wine::kServiceFile),
      hangs)
      .Play();
}

// The support program on the story's notebook: before anything has happened, with the service
// installed, or when the service rests behind the last event.
void Look(bool before, const fs::path& file) {
  const virtual_notebook::Scenario scenario = virtual_notebook::ReadScenarioFile(file.string());
  const wine::StoryInPrefix story(scenario, fs::absolute(file));
  std::printf("logs %s\n", wine::LogFolder().string().c_str());
  const fs::path folder = wine::InstallFolder();
  wine::Player player(
      scenario, folder,
      wine::ServiceEntry(scenario.notebook.service_key, folder / wine::kServiceFile));
  const auto look = [&] {
    std::printf("support ended with %lu\n", wine::RunSupport(folder));
    std::fflush(stdout);
  };
  if (before) return look();
  player.LookAtRest(look);
  player.Play();
}

constexpr std::wstring_view kBefore = L"before";
bool IsMoment(std::wstring_view word) { return word == kBefore || word == L"after"; }

int Count(const wchar_t* text) { return static_cast<int>(std::wcstol(text, nullptr, 10)); }

int Run(int argc, wchar_t** argv) {
  const std::wstring command = argc > 1 ? argv[1] : L"";
  if (command == L"play" && argc == 3) {
    Play(argv[2], {});
  } else if (command == L"play" && argc > 3 && !Crashes(argv + 3, argc - 3).empty()) {
    Play(argv[2], Crashes(argv + 3, argc - 3));
  } else if (command == L"play-installed" && argc == 3) {
    Play(argv[2], {}, true);
  } else if (command == L"prepare" && argc == 2) {
    wine::PrepareForInstaller();
  } else if (command == L"support" && argc == 4 && IsMoment(argv[2])) {
    Look(argv[2] == kBefore, argv[3]);
  } else if (command == L"clean" && argc == 2) {
    wine::RemoveStory("");
    wine::RemoveMeasured();
  } else if (command == L"console" && argc == 2) {
    std::printf("exit code %lu\n", wine::RunOnConsole(wine::InstallFolder() / wine::kServiceFile));
  } else if (command == L"cycles" && argc == 3 && Count(argv[2]) > 0) {
    std::printf("%s\n", wine::MeasureCycles(Count(argv[2])).c_str());
  } else if (command == L"start-times" && argc == 5 && Count(argv[4]) > 0) {
    std::printf(
        "%s\n",
        wine::MeasureStarts(fs::absolute(argv[2]), fs::absolute(argv[3]), Count(argv[4])).c_str());
  } else {
    std::fprintf(stderr,
                 "usage: service_driver play SCENARIO [(crash | crash-by-overflow | "
                 "hang-in-message | hang-in-dump)...] | play-installed SCENARIO | prepare | "
                 "support (before | after) SCENARIO | clean | console | cycles N | "
                 "start-times EXE OTHER N\n");
    return kMisused;
  }
  return kDone;
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
  try {
    return Run(argc, argv);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "service_driver: %s\n", error.what());
    return kFailed;
  }
}
