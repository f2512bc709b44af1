// A program run as a child of this one.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <map>
#include <string>
#include <vector>

namespace nuvelta::wine_notebook {

class ChildProcess {
 public:
  // Runs `command` with `environment` added to this process's; an empty text
  // removes a variable. Its folder is `folder`, or this process's when that is empty.
  // What it prints can be read; its input is empty. It is killed when this process
  // dies. Throws std::runtime_error.
  ChildProcess(const std::vector<std::string>& command,
               const std::map<std::string, std::string>& environment,
               const std::string& folder = {});
  // Kills it when it still runs.
  ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  // Waits until it prints something or ends, at most so long. Answers whether it
  // still runs.
  bool Wait(std::chrono::milliseconds patience);

  // Whole lines that it has printed since the last call; after its end also a
  // last line without an end.
  std::vector<std::string> Lines();

  // Once it has ended: its exit code, or 128 and the signal.
  int ExitCode() const { return m_exit_code; }

 private:
  void Drain();

  pid_t m_process = -1;
  int m_output = -1;
  std::string m_text;
  int m_exit_code = 0;
};

// Runs it to its end; everything that it prints is dropped. Answers the exit code.
// Interruptions do not end it. Throws std::runtime_error when it cannot be run or
// has not ended after `patience`.
int RunQuietly(const std::vector<std::string>& command,
               const std::map<std::string, std::string>& environment,
               std::chrono::seconds patience);

}  // namespace nuvelta::wine_notebook
