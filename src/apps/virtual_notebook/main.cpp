// virtual_notebook: plays stories of the service on a notebook made of data.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>

#include "apps/virtual_notebook/commands.h"

int main(int argc, char** argv) {
  using namespace nuvelta::story;

  CLI::App app{"Plays the service on a virtual notebook: real code, virtual time."};
  app.require_subcommand(1);
  app.footer(
      "Exit code: 0 when every story ran to its end, 1 when the service crashed or was stuck,\n"
      "2 for bad input. The scenario format is described in docs/scenarios.md.");

  RunOptions run_options;
  std::string summary_format;
  CLI::App* run = app.add_subcommand("run", "Play scenarios and show the service's log");
  run->add_option("FILE", run_options.files, "Scenario files")->required();
  run->add_option("--seed", run_options.seed,
                  "Choose the interleaving of the threads (default: the scenario's)");
  run->add_option("--log-dir", run_options.log_dir,
                  "Keep the log files below this folder, one folder a scenario");
  run->add_option("--summary", summary_format,
                  "json: print a JSON object for each scenario, without the log")
      ->check(CLI::IsMember({"json"}));
  run->add_flag("--free", run_options.free_running,
                "Let all threads run at once instead of one at a time");

  std::string folder = "scenarios";
  CLI::App* list = app.add_subcommand("list", "List the scenarios of a folder");
  list->add_option("FOLDER", folder, "The folder")->capture_default_str();

  std::vector<std::string> checked;
  CLI::App* check = app.add_subcommand("check", "Read scenarios without playing them");
  check->add_option("FILE", checked, "Scenario files")->required();

  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? kRanToItsEnd : kBadInput;
  }
  try {
    run_options.json = summary_format == "json";
    if (run->parsed()) return Run(run_options);
    if (list->parsed()) return List(folder);
    return Check(checked);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "virtual_notebook: %s\n", error.what());
    return kMisbehaved;
  }
}
