// The commands of the program virtual_notebook.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "notebook/model/scenario.h"
#include "notebook/program/summary.h"
#include "support/capture/capture.h"

namespace nuvelta::story {

// Exit codes of the program.
inline constexpr int kRanToItsEnd = 0;
inline constexpr int kMisbehaved = 1;
inline constexpr int kBadInput = 2;

struct RunOptions {
  std::vector<std::string> files;
  std::optional<uint64_t> seed;
  std::string log_dir;  // empty: the log files are not kept
  bool json = false;
  bool free_running = false;
};

struct DoctorCommand {
  std::string file;
  std::optional<double> at;  // seconds of the story
  bool query = true;
  bool json = false;
};

struct CaptureCommand {
  std::string file;
  std::optional<double> at;  // seconds of the story
  support::CaptureRequest request;
};

// All scenarios, "-" being the one on standard input, or none when one of them is
// bad; says which.
std::optional<std::vector<virtual_notebook::Scenario>> ReadAll(
    const std::vector<std::string>& files);
// Prints what became of story `number` of `count`: the table of a single story, a
// line of one among several, or JSON. Answers the exit code that it deserves:
// kNotWritten (see standard_output.h) when its log was lost.
int ShowSummary(const Summary& summary, size_t number, size_t count, bool json);

// Plays scenarios; nothing runs when one of them cannot be read. From then on it is
// interruptible: what has been played is still summed up.
int Run(const RunOptions& options);
// Plays a scenario up to a moment and has the support program's doctor look at the notebook
// then. Answers the doctor's exit code.
int Doctor(const DoctorCommand& command);
// The same with a capture of the notebook. Answers the capture's exit code.
int Capture(const CaptureCommand& command);
// Lists the scenarios of a folder with their titles.
int List(const std::string& folder);
// Reads scenarios and reports what is wrong with them.
int Check(const std::vector<std::string>& files);
// Lists the calls that a scenario can refuse, as docs/scenarios.md or as its JSON schema
// has them.
int Calls(bool schema);

}  // namespace nuvelta::story
