// Ctrl-C and requests to end, taken note of where it is safe to act on them.
#pragma once

#include <stdexcept>

namespace nuvelta::story {

class Interrupted : public std::runtime_error {
 public:
  explicit Interrupted(int signal);
  int Signal() const { return m_signal; }

 private:
  int m_signal;
};

// From now on SIGINT, SIGTERM and SIGHUP are only noted; those that whoever started
// us has had ignored, as nohup does, still are.
void TakeInterruptions();

// Notes `signal` as if it had come. Safe on any thread and in signal handlers.
void NoteInterruption(int signal);

// The signal that has been noted, or 0. Safe on any thread.
int NotedInterruption();

// Throws Interrupted once one of them has come; not again for the same one.
void ThrowIfInterrupted();

// Says on standard error that `program` was interrupted, unless that was by a reader
// of its output who had read enough. Answers the exit code, 128 and the signal.
int EndInterrupted(const char* program, int signal);

}  // namespace nuvelta::story
