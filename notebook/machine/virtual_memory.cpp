#include "notebook/machine/virtual_memory.h"

#include <cstdlib>

namespace nuvelta::virtual_notebook {

VirtualMemory::~VirtualMemory() { EndProcess(); }

void* VirtualMemory::HeapAlloc(size_t bytes) {
  if (m_context.Fails("HeapAlloc")) return nullptr;
  return Keep(std::malloc(bytes == 0 ? 1 : bytes));
}

void VirtualMemory::HeapFree(void* block) noexcept { Release(block); }

void* VirtualMemory::LocalAlloc(size_t bytes) {
  if (m_context.Fails("LocalAlloc")) return nullptr;
  return Keep(std::calloc(1, bytes == 0 ? 1 : bytes));
}

void VirtualMemory::LocalFree(void* block) noexcept { Release(block); }

void* VirtualMemory::Keep(void* block) {
  if (block == nullptr) return nullptr;
  const std::lock_guard lock(m_mutex);
  m_blocks.insert(block);
  return block;
}

void VirtualMemory::Release(void* block) noexcept {
  if (block == nullptr) return;
  const std::lock_guard lock(m_mutex);
  // A block freed twice, or never allocated, is a fault of the caller.
  if (m_blocks.erase(block) == 0) std::abort();
  std::free(block);
}

void VirtualMemory::EndProcess() {
  const std::lock_guard lock(m_mutex);
  for (void* block : m_blocks) std::free(block);
  m_blocks.clear();
}

}  // namespace nuvelta::virtual_notebook
