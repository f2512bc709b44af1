// What the benchmarks share.
#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>

#include "platform/virtual/scenario/scenario.h"

namespace nuvelta::bench {

// A folder that goes when the object goes.
class TemporaryFolder {
 public:
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  const std::filesystem::path& Path() const { return m_path; }

 private:
  std::filesystem::path m_path;
};

virtual_notebook::Scenario ShippedScenario(const char* name);

// Runs `body` as the only thread of a service process on the default notebook.
void RunInProcess(const std::function<void()>& body);

// The resident memory of this process, in bytes.
size_t ResidentBytes();

}  // namespace nuvelta::bench
