// Counts what the calling thread allocates with operator new, which this program
// replaces.
#pragma once

#include <cstddef>

namespace nuvelta::bench {

struct Allocations {
  size_t blocks = 0;
  size_t bytes = 0;
};

void StartCounting();
Allocations StopCounting();

}  // namespace nuvelta::bench
