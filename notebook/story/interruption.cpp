#include "notebook/story/interruption.h"

#include <array>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <string>

namespace nuvelta::story {

namespace {

constexpr std::array kSignals{SIGINT, SIGTERM, SIGHUP};
constexpr int kInterruptedCode = 128;

std::atomic<int> g_signal = 0;

}  // namespace

Interrupted::Interrupted(int signal)
    : std::runtime_error("interrupted by signal " + std::to_string(signal)), m_signal(signal) {}

void TakeInterruptions() {
  struct sigaction action {};
  action.sa_handler = NoteInterruption;
  // Half-done writes go on.
  action.sa_flags = SA_RESTART;
  sigemptyset(&action.sa_mask);
  for (const int signal : kSignals) {
    struct sigaction inherited {};
    sigaction(signal, nullptr, &inherited);
    if (inherited.sa_handler != SIG_IGN) sigaction(signal, &action, nullptr);
  }
}

void NoteInterruption(int signal) { g_signal = signal; }

int NotedInterruption() { return g_signal; }

void ThrowIfInterrupted() {
  const int signal = g_signal.exchange(0);
  if (signal != 0) throw Interrupted(signal);
}

int EndInterrupted(const char* program, int signal) {
  if (signal != SIGPIPE) {
    std::fprintf(stderr, "%s: interrupted by signal %d (%s)\n", program, signal, strsignal(signal));
  }
  return kInterruptedCode + signal;
}

}  // namespace nuvelta::story
