#include "wine/program/child_process.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace nuvelta::wine_notebook {

namespace {

constexpr int kNotRun = 127;

[[noreturn]] void Fail(const std::string& what) {
  throw std::runtime_error(what + ": " + std::strerror(errno));
}

// In the child, which has one thread.
[[noreturn]] void Become(const std::vector<std::string>& command,
                         const std::map<std::string, std::string>& environment,
                         const std::string& folder, int output) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  // A Ctrl-C at the terminal is the parent's to act on.
  setpgid(0, 0);
  std::signal(SIGPIPE, SIG_DFL);
  std::signal(SIGXFSZ, SIG_DFL);
  dup2(open("/dev/null", O_RDONLY), STDIN_FILENO);
  dup2(output, STDOUT_FILENO);
  dup2(output, STDERR_FILENO);
  for (const auto& [name, value] : environment) {
    if (value.empty()) {
      unsetenv(name.c_str());
    } else {
      setenv(name.c_str(), value.c_str(), 1);
    }
  }
  if (!folder.empty() && chdir(folder.c_str()) != 0) _exit(kNotRun);
  std::vector<char*> arguments;
  arguments.reserve(command.size() + 1);
  for (const std::string& argument : command) {
    arguments.push_back(const_cast<char*>(argument.c_str()));
  }
  arguments.push_back(nullptr);
  execvp(arguments.front(), arguments.data());
  _exit(kNotRun);
}

}  // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& command,
                           const std::map<std::string, std::string>& environment,
                           const std::string& folder) {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) Fail("a pipe");
  m_process = fork();
  if (m_process == 0) Become(command, environment, folder, ends[1]);
  close(ends[1]);
  m_output = ends[0];
  fcntl(m_output, F_SETFL, O_NONBLOCK);
  if (m_process < 0) {
    close(m_output);
    Fail(command.front());
  }
}

ChildProcess::~ChildProcess() {
  if (m_process > 0) {
    kill(m_process, SIGKILL);
    waitpid(m_process, nullptr, 0);
  }
  close(m_output);
}

bool ChildProcess::Wait(std::chrono::milliseconds patience) {
  pollfd ready{.fd = m_output, .events = POLLIN, .revents = 0};
  if (poll(&ready, 1, static_cast<int>(patience.count())) > 0) Drain();
  int status = 0;
  if (m_process < 0) return false;
  if (waitpid(m_process, &status, WNOHANG) != m_process) return true;
  m_process = -1;
  m_exit_code = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  // Programs that it has left behind may hold the pipe's other end for long.
  Drain();
  return false;
}

void ChildProcess::Drain() {
  std::array<char, 4096> buffer{};
  ssize_t size = 0;
  while ((size = read(m_output, buffer.data(), buffer.size())) > 0) {
    m_text.append(buffer.data(), static_cast<size_t>(size));
  }
}

std::vector<std::string> ChildProcess::Lines() {
  std::vector<std::string> lines;
  size_t begin = 0;
  for (size_t end = m_text.find('\n'); end != std::string::npos; end = m_text.find('\n', begin)) {
    lines.push_back(m_text.substr(begin, end - begin));
    begin = end + 1;
  }
  m_text.erase(0, begin);
  if (m_process < 0 && !m_text.empty()) lines.push_back(std::exchange(m_text, {}));
  for (std::string& line : lines) std::erase(line, '\r');
  return lines;
}

int RunQuietly(const std::vector<std::string>& command,
               const std::map<std::string, std::string>& environment,
               std::chrono::seconds patience) {
  ChildProcess child(command, environment);
  const auto end = std::chrono::steady_clock::now() + patience;
  while (child.Wait(std::chrono::milliseconds(20))) {
    child.Lines();
    if (std::chrono::steady_clock::now() > end) {
      throw std::runtime_error(command.back() + " has not ended after " +
                               std::to_string(patience.count()) + " s");
    }
  }
  return child.ExitCode();
}

}  // namespace nuvelta::wine_notebook
