// What a program prints: nothing that could not be printed passes for printed.
#pragma once

#include <atomic>
#include <cstdio>
#include <string_view>

namespace nuvelta::story {

// Exit code of a program whose log or report could not be written.
inline constexpr int kNotWritten = 4;

class Output {
 public:
  explicit Output(std::FILE* file) : m_file(file) {}

  // Writes all of it out, or keeps the error. A reader that has gone away counts as
  // an interruption by SIGPIPE. After a failure nothing more is written.
  void Print(std::string_view text);

  bool IsTerminal() const;
  // The errno of the first failure, or 0. Safe on any thread.
  int Error() const { return m_error; }

 private:
  std::FILE* m_file;
  std::atomic<int> m_error = 0;
};

Output& StandardOutput();

// To be called first: writing to a stream that is closed or has no reader, or past
// the allowed size of a file, becomes an error that is seen, instead of one that
// ends the program or ends up in a file that was opened later.
void SecureStandardStreams();

// To be called last: says on standard error when `program` could not print all, and
// answers kNotWritten then, else `code`; a reader that went away is an interruption.
int CheckStandardOutput(const char* program, int code);

}  // namespace nuvelta::story
