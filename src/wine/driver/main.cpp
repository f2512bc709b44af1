// service_driver: plays a story with the installed service, or measures it. Runs
// under Wine, from the service's folder, for as long as the story lasts: Wine ends
// its services with the last ordinary process.
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <string>

#include "platform/virtual/scenario/scenario_reader.h"
#include "wine/driver/benchmark.h"
#include "wine/driver/console_start.h"
#include "wine/driver/old_logs.h"
#include "wine/driver/player.h"
#include "wine/driver/prefix.h"
#include "wine/story/places.h"

namespace {

using namespace nuvelta;
namespace fs = std::filesystem;

constexpr int kDone = 0;
constexpr int kFailed = 1;
constexpr int kMisused = 2;

void Play(const fs::path& file, bool crash) {
  const virtual_notebook::Scenario scenario = virtual_notebook::ReadScenarioFile(file.string());
  const wine::StoryInPrefix story(scenario, fs::absolute(file));
  if (crash) std::ofstream(wine::InstallFolder() / wine::kCrashRequestFile);
  // Tells the host that the prefix is ready, and where to look for the log.
  std::printf("logs %s\n", wine::LogFolder().string().c_str());
  std::fflush(stdout);
  wine::Player(scenario, wine::InstallFolder()).Play();
}

int Count(const wchar_t* text) { return static_cast<int>(std::wcstol(text, nullptr, 10)); }

int Run(int argc, wchar_t** argv) {
  const std::wstring command = argc > 1 ? argv[1] : L"";
  if (command == L"play" && argc == 3) {
    Play(argv[2], false);
  } else if (command == L"play" && argc == 4 && std::wstring(argv[3]) == L"crash") {
    Play(argv[2], true);
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
                 "usage: service_driver play SCENARIO [crash] | clean | console | cycles N | "
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
