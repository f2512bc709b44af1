// hx2208_support: why is this radio on or off? Reads only.
#include <CLI/CLI.hpp>

#include <cstdio>
#include <exception>
#include <string>
#include <string_view>
#include <vector>

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#else
#include <unistd.h>
#endif

#include "support/explain.h"
#include "support/timeline.h"

namespace {

using namespace nuvelta;

constexpr const char* kProgram = "hx2208_support";

constexpr const char* kFooter =
    "Exit code of explain: 0 radio on, 1 off by rule, 2 off by failure, 3 unknown, 4 bad input,\n"
    "5 when the answer could not be written. Of several notebooks the one to be looked at first\n"
    "counts: off by failure, unknown, off by rule, on. docs/support.md describes the causes.\n"
    "Exit code of timeline: 0 written, whatever the verdict, 4 bad input, also when a file that\n"
    "is not its own is in the way, 5 when it could not be written.";

bool StandardOutputIsTerminal() {
#ifdef _WIN32
  return _isatty(_fileno(stdout)) != 0;
#else
  return isatty(STDOUT_FILENO) != 0;
#endif
}

void PrintTo(std::FILE* file, std::string_view text) {
  std::fwrite(text.data(), 1, text.size(), file);
}

void Answer(std::string_view text) { PrintTo(stdout, text); }

void Complain(std::string_view text) {
  std::fflush(stdout);
  PrintTo(stderr, std::string(kProgram) + ": " + std::string(text));
}

int Explain(const std::vector<std::string>& paths, bool json) {
  const auto explanation =
      json ? support::MakeJsonExplanation(Answer, Complain)
           : support::MakeTextExplanation(Answer, Complain, StandardOutputIsTerminal());
  return support::Explain(paths, *explanation);
}

int Main(int argc, char** argv) {
  CLI::App app{"Says why a notebook's radio is on or off. Changes nothing.", kProgram};
  app.require_subcommand(1);
  app.set_version_flag("--version", std::string(kProgram) + " " + NUVELTA_VERSION,
                       "Print the version and exit");
  app.footer(kFooter);
  std::vector<std::string> paths;
  bool json = false;
  CLI::App* const explain = app.add_subcommand("explain", "Explain the service's log files");
  explain->add_option("PATH", paths, "Log files or folders; each folder is a notebook")->required();
  explain->add_flag("--json", json, "JSON Lines, as docs/support.schema.json has them");
  support::TimelineRequest request;
  CLI::App* const timeline = app.add_subcommand(
      "timeline", "Draw a notebook's log as a page: threads, runs, commands, the radio");
  timeline->add_option("PATH", request.path, "A log file, or the folder of one notebook's logs")
      ->required();
  timeline
      ->add_option("-o,--output", request.page,
                   "The page, FILE.html; one that is there is replaced if it is a timeline")
      ->required();
  timeline->add_option("--trace", request.trace,
                       "Also a FILE.json in the trace event format, for trace viewers");
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : support::kBadInput;
  }
  if (*timeline) return support::WriteTimeline(request, Answer, Complain);
  return Explain(paths, json);
}

}  // namespace

int main(int argc, char** argv) {
#ifdef _WIN32
  // Line ends as they are.
  _setmode(_fileno(stdout), _O_BINARY);
#endif
  int result = support::kNotWritten;
  try {
    result = Main(argc, argv);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s: %s\n", kProgram, error.what());
  }
  if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
    std::fprintf(stderr, "%s: the answer could not be written\n", kProgram);
    return support::kNotWritten;
  }
  return result;
}
