// One process of the service, watched from outside.
#pragma once

#include <cstdint>
#include <optional>

#include "wine/driver/win32.h"

namespace nuvelta::wine {

class ServiceProcess {
 public:
  // None when there is no such process any more.
  static std::optional<ServiceProcess> Open(DWORD id);

  DWORD Id() const { return m_id; }
  bool Runs() const;
  DWORD ExitCode() const;  // once it has ended

  // Ends it from outside, and waits for that.
  void Kill() const;
  // Whether it has ended within `milliseconds`.
  bool AwaitEnd(DWORD milliseconds) const;

 private:
  ServiceProcess(DWORD id, Handle handle) : m_id(id), m_handle(std::move(handle)) {}

  DWORD m_id;
  Handle m_handle;
};

}  // namespace nuvelta::wine
