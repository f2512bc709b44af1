// Threads, events and critical sections of the virtual process.
#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "notebook/machine/context.h"
#include "platform/threads.h"

namespace nuvelta::virtual_notebook {

class VirtualThreads : public platform::Threads {
 public:
  explicit VirtualThreads(Context& context) : m_context(context) {}

  // For the threads of another process on the same notebook.
  Context& Notebook() const { return m_context; }

  platform::ThreadHandle CreateThread(platform::ThreadProcedure procedure, void* parameter,
                                      const char* name) override;
  bool StartDetachedThread(std::function<void()> body, const char* name) override;
  platform::EventHandle CreateEventW(bool manual_reset, bool initial_state) override;
  bool SetEvent(platform::EventHandle event) override;
  bool ResetEvent(platform::EventHandle event) override;
  bool CloseHandle(platform::EventHandle event) noexcept override;
  uint32_t WaitForSingleObject(platform::EventHandle event, uint32_t milliseconds) override;
  platform::CriticalSectionHandle InitializeCriticalSectionAndSpinCount(
      uint32_t spin_count) override;
  void EnterCriticalSection(platform::CriticalSectionHandle section) override;
  void LeaveCriticalSection(platform::CriticalSectionHandle section) noexcept override;
  void Sleep(uint32_t milliseconds) override;
  uint32_t GetCurrentThreadId() noexcept override;
  uint32_t GetCurrentProcessId() noexcept override;
  uint32_t GetLastError() noexcept override;

  // Forgets every handle, as at the end of the process.
  void EndProcess();

 private:
  struct Event;
  struct CriticalSection;
  std::shared_ptr<Event> FindEvent(platform::EventHandle event) const;
  bool Signal(platform::EventHandle event, bool signalled);

  Context& m_context;
  mutable std::mutex m_mutex;
  uintptr_t m_next_handle = 0x100;
  std::map<uintptr_t, std::shared_ptr<Event>> m_events;
  std::map<uintptr_t, std::shared_ptr<CriticalSection>> m_sections;
};

}  // namespace nuvelta::virtual_notebook
