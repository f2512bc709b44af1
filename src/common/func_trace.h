// Trace scopes: the log shows each call's entry and exit with its thread.
#pragma once

#include <array>

namespace nuvelta {

class CFuncTrace {
 public:
  // Writes the entry line. Names longer than 1023 characters are cut.
  explicit CFuncTrace(const char* pszFuncName);
  // Writes the exit line, unless dismissed or left by an exception. One that nobody
  // handles ends the process without unwinding on the platform, so that the line
  // never comes; the only other one is a lack of memory in an account handler,
  // which the handler's caller is told of.
  ~CFuncTrace();
  CFuncTrace(const CFuncTrace&) = delete;
  CFuncTrace& operator=(const CFuncTrace&) = delete;

  // For the few functions whose exit line is missing on a path.
  void Dismiss() noexcept { m_szFuncName[0] = '\0'; }

  // One line alone, for the few functions without the pair.
  static void WriteEntry(const char* pszFuncName);
  static void WriteExit(const char* pszFuncName);

 private:
  std::array<char, 1024> m_szFuncName{};
  int m_iUncaughtExceptions;
};

}  // namespace nuvelta
