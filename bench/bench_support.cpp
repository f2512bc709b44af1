#include "bench_support.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "notebook/scenario/scenario_reader.h"
#include "notebook/story/story.h"

namespace nuvelta::bench {

virtual_notebook::Scenario ShippedScenario(const char* name) {
  return virtual_notebook::ReadScenarioFile(std::string(NUVELTA_SOURCE_DIR) + "/scenarios/" + name +
                                            ".json");
}

void RunInProcess(const std::function<void()>& body) {
  const TemporaryFolder disk;
  virtual_notebook::Scenario scenario;
  scenario.notebook = virtual_notebook::DefaultNotebook();
  virtual_notebook::VirtualMachine(scenario, story::ServiceProgram(), {.disk = disk.Path()})
      .RunProcess(body);
}

size_t ResidentBytes() {
  std::FILE* statm = std::fopen("/proc/self/statm", "r");
  unsigned long total = 0;
  unsigned long resident = 0;
  if (statm == nullptr) return 0;
  const int read = std::fscanf(statm, "%lu %lu", &total, &resident);
  std::fclose(statm);
  return read == 2 ? resident * static_cast<size_t>(sysconf(_SC_PAGESIZE)) : 0;
}

}  // namespace nuvelta::bench
