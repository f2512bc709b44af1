// hx2208_support: why is this radio on or off? Reads only.
#include <CLI/CLI.hpp>

#include <cstdio>
#include <exception>
#include <string>
#include <string_view>
#include <vector>

#include "apps/hx2208_support/program.h"
#include "support/capture/capture.h"
#include "support/capture/log_scenario.h"
#include "support/doctor.h"
#include "support/explain.h"
#include "support/timeline.h"

namespace nuvelta::support {

namespace {

constexpr const char* kProgram = "hx2208_support";

constexpr const char* kFooter =
    "Exit code of explain and doctor: 0 radio on, 1 off by rule, 2 off by failure, 3 unknown,\n"
    "4 bad input, 5 when the answer could not be written. Of several notebooks the one to be\n"
    "looked at first counts: off by failure, unknown, off by rule, on. docs/support.md describes\n"
    "the causes.\n"
    "Exit code of timeline, capture and scenario: 0 written, whatever the verdict, 4 bad input, "
    "also when a\n"
    "file that is not their own is in the way, 5 when it could not be written.";

void PrintTo(std::FILE* file, std::string_view text) {
  std::fwrite(text.data(), 1, text.size(), file);
}

void Answer(std::string_view text) { PrintTo(stdout, text); }

void AnswerAtOnce(std::string_view text) {
  Answer(text);
  std::fflush(stdout);
}

void Complain(std::string_view text) {
  std::fflush(stdout);
  PrintTo(stderr, std::string(kProgram) + ": " + std::string(text));
  std::fflush(stderr);
}

// What was asked for.
struct Request {
  std::vector<std::string> paths;
  TimelineRequest timeline;
  CaptureRequest capture;
  LogScenarioRequest scenario;
  bool json = false;
  bool no_query = false;
};

CLI::App* AddExplain(CLI::App& app, Request& request) {
  CLI::App* const explain = app.add_subcommand("explain", "Explain the service's log files");
  explain->add_option("PATH", request.paths, "Log files or folders; each folder is a notebook")
      ->required();
  explain->add_flag("--json", request.json, "JSON Lines, as docs/support.schema.json has them");
  return explain;
}

CLI::App* AddTimeline(CLI::App& app, Request& request) {
  CLI::App* const timeline = app.add_subcommand(
      "timeline", "Draw a notebook's log as a page: threads, runs, commands, the radio");
  timeline
      ->add_option("PATH", request.timeline.path,
                   "A log file, or the folder of one notebook's logs")
      ->required();
  timeline
      ->add_option("-o,--output", request.timeline.page,
                   "The page, FILE.html; one that is there is replaced if it is a timeline")
      ->required();
  timeline->add_option("--trace", request.timeline.trace,
                       "Also a FILE.json in the trace event format, for trace viewers");
  return timeline;
}

CLI::App* AddDoctor(CLI::App& app, Request& request) {
  CLI::App* const doctor =
      app.add_subcommand("doctor", "Walk the service's decision on this notebook, now");
  doctor->add_flag("--no-query", request.no_query, "Leave the modem alone: no session, no command");
  doctor->add_flag("--json", request.json, "A JSON object, as docs/doctor.schema.json has it");
  return doctor;
}

CLI::App* AddCapture(CLI::App& app, Request& request) {
  CLI::App* const capture = app.add_subcommand(
      "capture", "Write this notebook down as a scenario, to be played elsewhere");
  capture
      ->add_option("-o,--output", request.capture.folder,
                   "The folder; one that is there is replaced if it is a capture")
      ->required();
  capture->add_flag("--no-query", request.no_query,
                    "Leave the modem alone: no session, no command");
  capture->add_flag("--keep-names", request.capture.keep_names,
                    "Keep serial numbers, asset tags, the UUID, account and computer names");
  return capture;
}

CLI::App* AddScenario(CLI::App& app, Request& request) {
  CLI::App* const scenario =
      app.add_subcommand("scenario", "Make a scenario of a log, to be played and changed");
  scenario
      ->add_option("LOG", request.scenario.path, "A log file, or the folder of one notebook's logs")
      ->required();
  scenario->add_option("-o,--output", request.scenario.file,
                       "The scenario, FILE.json (default: standard output)");
  return scenario;
}

int ExplainLogs(const Request& request, const Host& host) {
  const Print answer = host.at_once ? AnswerAtOnce : Answer;
  const auto explanation = request.json ? MakeJsonExplanation(answer, Complain)
                                        : MakeTextExplanation(answer, Complain, host.colour);
  return Explain(request.paths, *explanation);
}

int Doctor(const Request& request, bool colour) {
  const Diagnosis diagnosis = Diagnose({.query = !request.no_query});
  Answer(request.json ? DiagnosisJson(diagnosis) : DiagnosisText(diagnosis, colour));
  return ExitCodeOf(InfoOf(diagnosis.run.cause).verdict);
}

int Main(int argc, char** argv, const Host& host) {
  CLI::App app{"Says why a notebook's radio is on or off. Changes nothing.", kProgram};
  app.require_subcommand(1);
  app.set_version_flag("--version", std::string(kProgram) + " " + NUVELTA_VERSION,
                       "Print the version and exit");
  app.footer(kFooter);
  Request request;
  AddExplain(app, request);
  const CLI::App* const timeline = AddTimeline(app, request);
  const CLI::App* const scenario = AddScenario(app, request);
  const CLI::App* const doctor = host.notebook ? AddDoctor(app, request) : nullptr;
  const CLI::App* const capture = host.notebook ? AddCapture(app, request) : nullptr;
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : kBadInput;
  }
  if (timeline->parsed()) return WriteTimeline(request.timeline, Answer, Complain);
  if (scenario->parsed()) return WriteLogScenario(request.scenario, Answer, Complain);
  if (doctor != nullptr && doctor->parsed()) return Doctor(request, host.colour);
  if (capture != nullptr && capture->parsed()) {
    request.capture.query = !request.no_query;
    return Capture(request.capture, Answer, Complain);
  }
  return ExplainLogs(request, host);
}

}  // namespace

int RunProgram(int argc, char** argv, const Host& host) {
  int result = kNotWritten;
  try {
    result = Main(argc, argv, host);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s: %s\n", kProgram, error.what());
  }
  if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
    std::fprintf(stderr, "%s: the answer could not be written\n", kProgram);
    return kNotWritten;
  }
  return result;
}

}  // namespace nuvelta::support
