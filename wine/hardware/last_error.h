// What the virtual hardware does behind a call must not show in the thread's last
// error: the service logs it after calls that do not set it.
#pragma once

#include <windows.h>

namespace nuvelta::wine {

// Puts the calling thread's last error back at the end of its scope.
class KeepLastError {
 public:
  KeepLastError() = default;
  ~KeepLastError() { SetLastError(m_error); }
  KeepLastError(const KeepLastError&) = delete;
  KeepLastError& operator=(const KeepLastError&) = delete;

 private:
  const DWORD m_error = GetLastError();
};

}  // namespace nuvelta::wine
