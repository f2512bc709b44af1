// Why a radio is on or off, from log files: for one notebook or a whole fleet.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "support/log_story.h"

namespace nuvelta::support {

// Exit codes of the program; the first four are also those of the verdicts.
inline constexpr int kRadioOn = 0;
inline constexpr int kRadioOffByRule = 1;
inline constexpr int kRadioOffByFailure = 2;
inline constexpr int kRadioUnknown = 3;
inline constexpr int kBadInput = 4;
inline constexpr int kNotWritten = 5;

int ExitCodeOf(Verdict verdict);

// The logs of one notebook.
struct NotebookLogs {
  std::string name;                          // the folder, or the file when it was named alone
  std::vector<std::filesystem::path> files;  // in the order of their lines
};

// What is known of a notebook behind its last log.
struct NotebookVerdict {
  std::string name{};
  Process last{};            // the last process
  Place since{};             // since when the verdict holds, over all processes
  std::string first_seen{};  // the times of the first and the last line
  std::string last_seen{};
  uint64_t processes = 0;
};

// Hears all of an explanation, in order.
class Explanation : public LogListener {
 public:
  virtual void OnNotebook(const NotebookLogs& /*logs*/) {}
  virtual void OnVerdict(const NotebookVerdict& /*verdict*/) {}
  // One line about what could not be read.
  virtual void OnProblem(const std::string& /*what*/) {}
  virtual void OnEnd() {}
};

// Reads all paths, files or folders; a folder below one of them that holds logs is a
// notebook of its own. Answers the exit code: of several verdicts the one to be looked at
// first (off by failure, unknown, off by rule, on), kBadInput when something could not be
// read.
int Explain(const std::vector<std::string>& paths, Explanation& explanation);

using Print = std::function<void(std::string_view)>;

// For people; with `colour` for a terminal.
std::unique_ptr<Explanation> MakeTextExplanation(Print print, Print complain, bool colour);
// JSON Lines, as docs/support.schema.json has them.
std::unique_ptr<Explanation> MakeJsonExplanation(Print print, Print complain);

}  // namespace nuvelta::support
