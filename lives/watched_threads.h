// The threads port, telling a watch of locks, signals and pauses.
#pragma once

#include <functional>
#include <list>

#include "lives/watch.h"
#include "platform/threads.h"

namespace nuvelta::explore {

class WatchedThreads final : public platform::Threads {
 public:
  // Tells the watch while `on`.
  WatchedThreads(platform::Threads& threads, Watch& watch, const bool& on)
      : m_threads(threads), m_watch(watch), m_on(on) {}

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

 private:
  // What the worker is to run, with the manager that it is given.
  struct Launch {
    Watch& watch;
    platform::ThreadProcedure procedure;
    void* manager;
  };
  static uint32_t RunWorker(void* launch);

  platform::Threads& m_threads;
  Watch& m_watch;
  const bool& m_on;
  std::list<Launch> m_launches;
};

}  // namespace nuvelta::explore
