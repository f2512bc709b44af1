#include "counted_new.h"

#include <cstdlib>
#include <new>

namespace nuvelta::bench {

namespace {
thread_local bool t_counting = false;
thread_local Allocations t_counted;
}  // namespace

void StartCounting() {
  t_counted = {};
  t_counting = true;
}

Allocations StopCounting() {
  t_counting = false;
  return t_counted;
}

void Count(size_t size) {
  if (!t_counting) return;
  ++t_counted.blocks;
  t_counted.bytes += size;
}

}  // namespace nuvelta::bench

void* operator new(size_t size) {
  nuvelta::bench::Count(size);
  if (void* block = std::malloc(size == 0 ? 1 : size)) return block;
  throw std::bad_alloc();
}
void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, size_t /*size*/) noexcept { std::free(block); }
