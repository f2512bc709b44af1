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

namespace {

using namespace nuvelta;

constexpr const char* kProgram = "hx2208_support";
// Of a program that could not print all that it had to say.
constexpr int kNotWritten = 5;

constexpr const char* kFooter =
    "Exit code of explain: 0 radio on, 1 off by rule, 2 off by failure, 3 unknown, 4 bad input,\n"
    "5 when the answer could not be written. Of several notebooks the one to be looked at first\n"
    "counts: off by failure, unknown, off by rule, on. docs/support.md describes the causes.";

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

int Explain(const std::vector<std::string>& paths, bool json) {
  const support::Print print = [](std::string_view text) { PrintTo(stdout, text); };
  const support::Print complain = [](std::string_view text) {
    std::fflush(stdout);
    PrintTo(stderr, std::string(kProgram) + ": " + std::string(text));
  };
  const auto explanation =
      json ? support::MakeJsonExplanation(print, complain)
           : support::MakeTextExplanation(print, complain, StandardOutputIsTerminal());
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
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : support::kBadInput;
  }
  return Explain(paths, json);
}

}  // namespace

int main(int argc, char** argv) {
#ifdef _WIN32
  // Line ends as they are.
  _setmode(_fileno(stdout), _O_BINARY);
#endif
  int result = kNotWritten;
  try {
    result = Main(argc, argv);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s: %s\n", kProgram, error.what());
  }
  if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
    std::fprintf(stderr, "%s: the answer could not be written\n", kProgram);
    return kNotWritten;
  }
  return result;
}
