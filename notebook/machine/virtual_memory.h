// The heaps of the virtual process.
#pragma once

#include <mutex>
#include <unordered_set>

#include "notebook/machine/context.h"
#include "platform/memory.h"

namespace nuvelta::virtual_notebook {

class VirtualMemory final : public platform::Memory {
 public:
  explicit VirtualMemory(Context& context) : m_context(context) {}
  ~VirtualMemory() override;

  void* HeapAlloc(size_t bytes) override;
  void HeapFree(void* block) noexcept override;
  void* LocalAlloc(size_t bytes) override;
  void LocalFree(void* block) noexcept override;

  // Returns every block that is still allocated, as the end of a process does.
  void EndProcess();

 private:
  void* Keep(void* block);
  void Release(void* block) noexcept;

  Context& m_context;
  std::mutex m_mutex;
  std::unordered_set<void*> m_blocks;
};

}  // namespace nuvelta::virtual_notebook
