// wine_notebook: plays stories with the real executable under Wine.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "notebook/program/commands.h"
#include "notebook/story/interruption.h"
#include "notebook/story/standard_output.h"
#include "support/explain.h"
#include "wine/program/bad_input.h"
#include "wine/program/wine_commands.h"

namespace nuvelta::wine_notebook {
namespace {

constexpr const char* kProgram = "wine_notebook";

int Main(int argc, char** argv) {
  CLI::App app{"Plays the service's executable under Wine: real Win32, virtual hardware and time."};
  app.require_subcommand(1);
  app.set_version_flag("--version", "wine_notebook " NUVELTA_VERSION);
  app.footer(
      "Exit code: 0 when every story ran to its end (parity: and was the same both ways), 1 when\n"
      "not, 2 for bad input, 3 when Wine is missing, does not work or its prefix is in use,\n"
      "4 when the output could not be written, 128 and the signal when interrupted.\n"
      "support: that of hx2208_support, also 4 for bad input; 6 instead of 3.\n"
      "The scenario format is described in docs/scenarios.md.");

  Places places{
      .binaries = {.service = "build/windows-clang/bin", .stage = "build/windows-clang/wine"},
      .prefix = "build/wine/notebook",
      .package = {}};
  app.add_option("--bin", places.binaries.service, "The folder of the service's executable")
      ->type_name("DIR")
      ->capture_default_str();
  app.add_option("--stage", places.binaries.stage,
                 "The folder of its virtual hardware and of the driver")
      ->type_name("DIR")
      ->capture_default_str();
  app.add_option("--prefix", places.prefix,
                 "The Wine prefix: made when nothing is there; a folder that wine_notebook has\n"
                 "not made is left alone")
      ->type_name("DIR")
      ->capture_default_str();

  std::vector<std::string> files;
  bool json = false;
  CLI::App* run = app.add_subcommand("run", "Play scenarios and show the service's log");
  run->add_option("FILE", files, "Scenario files")->required();
  run->add_option("--installed", places.package,
                  "Install this package with msiexec first, play with its service, remove it")
      ->type_name("MSI");
  run->add_flag("--json", json, "Print a JSON object for each scenario, without the log");
  CLI::App* parity =
      app.add_subcommand("parity", "Play scenarios also on the virtual notebook, and compare");
  parity->add_option("FILE", files, "Scenario files")->required();
  SupportOrder order;
  CLI::App* look = app.add_subcommand(
      "support",
      "Run hx2208_support.exe on a scenario's notebook: support after FILE -- doctor --json");
  std::string moment;
  look->add_option("MOMENT", moment,
                   "before: nothing has happened, the service is installed;\n"
                   "after: the service rests behind the last event")
      ->required()
      ->check(CLI::IsMember({"before", "after"}));
  look->add_option("FILE", order.file, "The scenario file")->required();
  look->add_option("ARGUMENT", order.arguments, "Its arguments; a path /X is to be written Z:/X")
      ->required();
  std::vector<std::string> arguments;
  CLI::App* drive = app.add_subcommand(
      "driver", "Run service_driver.exe itself: cycles N, start-times EXE OTHER N");
  drive->add_option("ARGUMENT", arguments, "Its arguments")->required();
  CLI::App* prepare = app.add_subcommand(
      "prepare", "Make the prefix one that packages can be installed in, with no product in it");
  CLI::App* clean = app.add_subcommand("clean", "Undo what an interrupted story has left");
  for (CLI::App* command : {run, parity, look, drive, prepare, clean}) command->fallthrough();

  const auto bad_input = [&] { return look->parsed() ? support::kBadInput : story::kBadInput; };
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? story::kRanToItsEnd : bad_input();
  }
  story::TakeInterruptions();
  try {
    if (run->parsed()) return Run(places, files, json);
    if (parity->parsed()) return Parity(places, files);
    if (look->parsed()) {
      order.moment = moment == "before" ? Moment::kBefore : Moment::kAfter;
      return Support(places, order);
    }
    if (drive->parsed()) return Drive(places, arguments);
    if (prepare->parsed()) return Prepare(places);
    return Clean(places);
  } catch (const story::Interrupted& interrupted) {
    return story::EndInterrupted(kProgram, interrupted.Signal());
  } catch (const BadInput& error) {
    std::fprintf(stderr, "%s: %s\n", kProgram, error.what());
    return bad_input();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s: %s\n", kProgram, error.what());
    return look->parsed() ? kWineFailedSupport : kWineFailed;
  }
}

}  // namespace
}  // namespace nuvelta::wine_notebook

int main(int argc, char** argv) {
  using namespace nuvelta;
  story::SecureStandardStreams();
  const int result = wine_notebook::Main(argc, argv);
  return story::CheckStandardOutput(wine_notebook::kProgram, result);
}
