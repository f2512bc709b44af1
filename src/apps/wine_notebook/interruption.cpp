#include "apps/wine_notebook/interruption.h"

#include <array>
#include <atomic>
#include <csignal>
#include <string>

namespace nuvelta::wine_notebook {

namespace {

constexpr std::array kSignals{SIGINT, SIGTERM, SIGHUP};

std::atomic<int> g_signal = 0;

}  // namespace

Interrupted::Interrupted(int signal)
    : std::runtime_error("interrupted by signal " + std::to_string(signal)), m_signal(signal) {}

void TakeInterruptions() {
  struct sigaction action {};
  action.sa_handler = [](int signal) { g_signal = signal; };
  sigemptyset(&action.sa_mask);
  for (const int signal : kSignals) sigaction(signal, &action, nullptr);
  std::signal(SIGPIPE, SIG_IGN);
}

void ThrowIfInterrupted() {
  const int signal = g_signal.exchange(0);
  if (signal != 0) throw Interrupted(signal);
}

}  // namespace nuvelta::wine_notebook
