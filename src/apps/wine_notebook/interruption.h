// Ctrl-C and requests to end, taken note of where it is safe to act on them.
#pragma once

#include <stdexcept>

namespace nuvelta::wine_notebook {

class Interrupted : public std::runtime_error {
 public:
  explicit Interrupted(int signal);
  int Signal() const { return m_signal; }

 private:
  int m_signal;
};

// From now on SIGINT, SIGTERM and SIGHUP are only noted. A reader of our output
// that goes away is no reason to leave things half done either.
void TakeInterruptions();

// Throws Interrupted once one of them has come; not again for the same one.
void ThrowIfInterrupted();

}  // namespace nuvelta::wine_notebook
