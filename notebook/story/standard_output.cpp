#include "notebook/story/standard_output.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>

#include "notebook/story/interruption.h"

namespace nuvelta::story {

void Output::Print(std::string_view text) {
  if (m_error != 0) return;
  if (std::fwrite(text.data(), 1, text.size(), m_file) == text.size() && std::fflush(m_file) == 0)
    return;
  m_error = errno;
  if (m_error == EPIPE) NoteInterruption(SIGPIPE);
}

bool Output::IsTerminal() const { return isatty(fileno(m_file)) != 0; }

Output& StandardOutput() {
  static Output output(stdout);
  return output;
}

void SecureStandardStreams() {
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(stream, F_GETFD) >= 0) continue;
    // The lowest free descriptor is the stream's; the wrong way round, so that it is
    // of no more use than a closed one.
    const int held = open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    if (held >= 0 && held != stream) close(held);
  }
}

int CheckStandardOutput(const char* program, int code) {
  int error = StandardOutput().Error();
  if (error == 0 && (std::fflush(stdout) != 0 || std::ferror(stdout) != 0)) {
    error = errno != 0 ? errno : EIO;
  }
  if (error == 0) return code;
  if (error == EPIPE) return std::max(code, EndInterrupted(program, SIGPIPE));
  std::fprintf(stderr, "%s: standard output: %s\n", program, std::strerror(error));
  return std::max(code, kNotWritten);
}

}  // namespace nuvelta::story
