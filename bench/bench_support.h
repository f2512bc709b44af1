// What the benchmarks share.
#pragma once

#include <cstddef>
#include <functional>

#include "notebook/model/scenario.h"
#include "notebook/story/temporary_folder.h"

namespace nuvelta::bench {

using story::TemporaryFolder;

virtual_notebook::Scenario ShippedScenario(const char* name);

// Runs `body` as the only thread of a service process on the default notebook.
void RunInProcess(const std::function<void()>& body);

// The resident memory of this process, in bytes.
size_t ResidentBytes();

}  // namespace nuvelta::bench
