// virtual_notebook: plays stories of the service on a notebook made of data.
#include <CLI/CLI.hpp>
#include <charconv>
#include <cstdio>
#include <exception>
#include <sstream>
#include <system_error>

#include "notebook/program/commands.h"
#include "notebook/story/standard_output.h"
#include "support/explain.h"

namespace nuvelta::story {
namespace {

constexpr const char* kProgram = "virtual_notebook";
constexpr double kLongestStory = 1e9;  // seconds

// The library's own reading of numbers takes a sign, and wraps around.
uint64_t ParseSeed(const std::string& text) {
  uint64_t seed = 0;
  const char* const end = text.data() + text.size();
  const auto [parsed, error] = std::from_chars(text.data(), end, seed);
  if (error != std::errc() || parsed != end) {
    throw CLI::ValidationError("--seed", "found " + text +
                                             "; expected a whole number from 0 to "
                                             "18446744073709551615");
  }
  return seed;
}

int Main(int argc, char** argv) {
  CLI::App app{"Plays the service on a virtual notebook: real code, virtual time.", kProgram};
  app.require_subcommand(1);
  app.set_version_flag("--version", std::string(kProgram) + " " + NUVELTA_VERSION,
                       "Print the version and exit");
  app.footer(
      "Exit code: 0 when every story ran to its end, 1 when the service crashed or was stuck,\n"
      "2 for bad input, 4 when the log or the report could not be written, 128 and the signal\n"
      "when interrupted. Of doctor: 0 radio on, 1 off by rule, 2 off by failure, 3 unknown,\n"
      "4 for bad input or when the answer could not be written. Of capture: 0 written, 4 bad "
      "input, 5 not written. The scenario format is described "
      "in docs/scenarios.md.");

  RunOptions run_options;
  std::string summary_format;
  CLI::App* run = app.add_subcommand("run", "Play scenarios and show the service's log");
  run->add_option("FILE", run_options.files, "Scenario files; - is standard input")->required();
  run->add_option_function<std::string>(
         "--seed", [&](const std::string& text) { run_options.seed = ParseSeed(text); },
         "Choose the interleaving of the threads (default: the scenario's)")
      ->type_name("NUMBER");
  run->add_option("--log-dir", run_options.log_dir,
                  "Keep the log files below this folder, one folder a scenario")
      ->type_name("FOLDER")
      ->check([](const std::string& text) {
        return std::string(text.empty() ? "found nothing; expected a folder" : "");
      });
  run->add_option("--summary", summary_format,
                  "json: print a JSON object in one line for each scenario, without the log")
      ->check(CLI::IsMember({"json"}));
  run->add_flag("--free", run_options.free_running,
                "Let all threads run at once instead of one at a time");

  std::string folder = "scenarios";
  CLI::App* list = app.add_subcommand("list", "List the scenarios of a folder");
  list->add_option("FOLDER", folder, "The folder")->capture_default_str();

  std::vector<std::string> checked;
  CLI::App* check = app.add_subcommand("check", "Read scenarios without playing them");
  check->add_option("FILE", checked, "Scenario files; - is standard input")->required();

  bool schema = false;
  CLI::App* calls = app.add_subcommand("calls", "List the calls that a scenario can refuse");
  calls->add_flag("--schema", schema, "As definitions of the format's JSON schema");

  DoctorCommand doctor_command;
  bool no_query = false;
  CLI::App* doctor = app.add_subcommand(
      "doctor", "Say why a notebook's radio is on or off at a moment of its story");
  doctor->add_option("FILE", doctor_command.file, "The scenario file; - is standard input")
      ->required();
  doctor
      ->add_option("--at", doctor_command.at,
                   "Seconds from the story's start (default: at rest behind its last event)")
      ->type_name("SECONDS")
      ->check(CLI::Range(0.0, kLongestStory));
  doctor->add_flag("--no-query", no_query, "Leave the modem alone: no session, no command");
  doctor->add_flag("--json", doctor_command.json,
                   "A JSON object, as docs/doctor.schema.json has it");

  CaptureCommand capture_command;
  CLI::App* capture = app.add_subcommand(
      "capture", "Write a notebook at a moment of its story down as another scenario");
  capture->add_option("FILE", capture_command.file, "The scenario file; - is standard input")
      ->required();
  capture
      ->add_option("-o,--output", capture_command.request.folder,
                   "The folder; one that is there is replaced if it is a capture")
      ->type_name("FOLDER")
      ->required();
  capture
      ->add_option("--at", capture_command.at,
                   "Seconds from the story's start (default: at rest behind its last event)")
      ->type_name("SECONDS")
      ->check(CLI::Range(0.0, kLongestStory));
  capture->add_flag("--no-query", no_query, "Leave the modem alone: no session, no command");
  capture->add_flag("--keep-names", capture_command.request.keep_names,
                    "Keep serial numbers, asset tags, the UUID, account and computer names");

  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    std::ostringstream out;
    std::ostringstream err;
    const int bad = doctor->count() + capture->count() > 0 ? support::kBadInput : kBadInput;
    const int result = app.exit(error, out, err) == 0 ? kRanToItsEnd : bad;
    StandardOutput().Print(out.str());
    std::fputs(err.str().c_str(), stderr);
    return result;
  }
  run_options.json = summary_format == "json";
  if (run->parsed()) return Run(run_options);
  doctor_command.query = !no_query;
  if (doctor->parsed()) return Doctor(doctor_command);
  capture_command.request.query = !no_query;
  if (capture->parsed()) return Capture(capture_command);
  if (list->parsed()) return List(folder);
  if (calls->parsed()) return Calls(schema);
  return Check(checked);
}

}  // namespace
}  // namespace nuvelta::story

int main(int argc, char** argv) {
  using namespace nuvelta::story;
  SecureStandardStreams();
  int result = kNotWritten;
  try {
    result = Main(argc, argv);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s: %s\n", kProgram, error.what());
  }
  return CheckStandardOutput(kProgram, result);
}
