// wine_notebook: plays stories with the real executable under Wine.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>

#include "apps/virtual_notebook/commands.h"
#include "apps/wine_notebook/interruption.h"
#include "apps/wine_notebook/wine_commands.h"

int main(int argc, char** argv) {
  using namespace nuvelta::wine_notebook;

  CLI::App app{"Plays the service's executable under Wine: real Win32, virtual hardware and time."};
  app.require_subcommand(1);
  app.footer(
      "Exit code: 0 when every story ran to its end (parity: and was the same both ways), 1 when\n"
      "not, 2 for bad input, 3 when Wine is missing or does not work, 128 and the signal when\n"
      "interrupted. The scenario format is described in docs/scenarios.md.");

  Places places{.binaries = "build/windows-clang/bin", .prefix = "build/wine/prefix"};
  app.add_option("--bin", places.binaries, "The folder of the executable and what plays it")
      ->capture_default_str();
  app.add_option("--prefix", places.prefix, "The Wine prefix; it is made when it is not there")
      ->capture_default_str();

  std::vector<std::string> files;
  bool json = false;
  CLI::App* run = app.add_subcommand("run", "Play scenarios and show the service's log");
  run->add_option("FILE", files, "Scenario files")->required();
  run->add_flag("--json", json, "Print a JSON object for each scenario, without the log");
  CLI::App* parity =
      app.add_subcommand("parity", "Play scenarios also on the virtual notebook, and compare");
  parity->add_option("FILE", files, "Scenario files")->required();
  std::vector<std::string> arguments;
  CLI::App* drive = app.add_subcommand(
      "driver", "Run service_driver.exe itself: cycles N, start-times EXE OTHER N");
  drive->add_option("ARGUMENT", arguments, "Its arguments")->required();
  CLI::App* clean = app.add_subcommand("clean", "Undo what an interrupted story has left");
  for (CLI::App* command : {run, parity, drive, clean}) command->fallthrough();

  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? nuvelta::story::kRanToItsEnd : nuvelta::story::kBadInput;
  }
  TakeInterruptions();
  try {
    if (run->parsed()) return Run(places, files, json);
    if (parity->parsed()) return Parity(places, files);
    if (drive->parsed()) return Drive(places, arguments);
    return Clean(places);
  } catch (const Interrupted& interrupted) {
    std::fprintf(stderr, "wine_notebook: %s\n", interrupted.what());
    return 128 + interrupted.Signal();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "wine_notebook: %s\n", error.what());
    return kWineFailed;
  }
}
