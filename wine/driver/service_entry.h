// The service as the service control manager knows it.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

#include "wine/driver/win32.h"

namespace nuvelta::wine {

class ServiceEntry {
 public:
  // The entry that is there. Throws std::runtime_error.
  explicit ServiceEntry(const std::string& key);
  // Creates the entry: own process, started on demand. Throws std::runtime_error.
  ServiceEntry(const std::string& key, const std::filesystem::path& executable);

  // Each answers 0 or the error. Start waits until the process has connected to
  // the manager, Stop until the handler has returned: some seconds at most.
  DWORD Start() const;
  DWORD Stop() const;

  // What the manager knows of it; all zero when it cannot be asked.
  SERVICE_STATUS_PROCESS Status() const;

  // Waits until the manager has started it, as it does by itself when Wine begins, and
  // stops it. Throws std::runtime_error.
  void StopStarted() const;

  // Ends the process of such a service, waits for that end, and deletes the
  // entry. Nothing happens when there is none.
  static void Remove(const std::string& key);

 private:
  bool Await(DWORD state) const;

  ServiceHandle m_manager;
  ServiceHandle m_service;
};

}  // namespace nuvelta::wine
