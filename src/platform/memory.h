// The process heap and the local heap. Facts: heapapi.h, winbase.h pages.
#pragma once

#include <cstddef>

namespace nuvelta::platform {

class Memory {
 public:
  virtual ~Memory() = default;

  // From the process heap, aligned for any object, not cleared; null on failure.
  virtual void* HeapAlloc(size_t bytes) = 0;
  // A null block is ignored.
  virtual void HeapFree(void* block) noexcept = 0;
  // LPTR: fixed and zero-filled; null on failure.
  virtual void* LocalAlloc(size_t bytes) = 0;
  virtual void LocalFree(void* block) noexcept = 0;
};

}  // namespace nuvelta::platform
