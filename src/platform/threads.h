// Threads, events, critical sections. Facts: processthreadsapi.h and synchapi.h
// reference pages.
#pragma once

#include <cstdint>
#include <functional>

#include "platform/types.h"

namespace nuvelta::platform {

inline constexpr uint32_t kInfinite = 0xFFFFFFFF;    // INFINITE
inline constexpr uint32_t kWaitObject0 = 0;          // WAIT_OBJECT_0
inline constexpr uint32_t kWaitTimeout = 258;        // WAIT_TIMEOUT
inline constexpr uint32_t kWaitFailed = 0xFFFFFFFF;  // WAIT_FAILED

using ThreadProcedure = uint32_t (*)(void* parameter);

class Threads {
 public:
  virtual ~Threads() = default;

  // Default security and stack, run at once; null on failure. `name` is for
  // debuggers and reports only.
  virtual ThreadHandle CreateThread(ThreadProcedure procedure, void* parameter,
                                    const char* name) = 0;
  // Runs `body` on a thread that nobody waits for; false when none can be had.
  virtual bool StartDetachedThread(std::function<void()> body, const char* name) = 0;

  // Unnamed, default security; null on failure.
  virtual EventHandle CreateEventW(bool manual_reset, bool initial_state) = 0;
  virtual bool SetEvent(EventHandle event) = 0;
  virtual bool ResetEvent(EventHandle event) = 0;
  virtual bool CloseHandle(EventHandle event) noexcept = 0;
  virtual uint32_t WaitForSingleObject(EventHandle event, uint32_t milliseconds) = 0;

  // Recursive for its owner; kept for the life of the process.
  virtual CriticalSectionHandle InitializeCriticalSectionAndSpinCount(uint32_t spin_count) = 0;
  virtual void EnterCriticalSection(CriticalSectionHandle section) = 0;
  virtual void LeaveCriticalSection(CriticalSectionHandle section) noexcept = 0;

  virtual void Sleep(uint32_t milliseconds) = 0;
  virtual uint32_t GetCurrentThreadId() noexcept = 0;
  virtual uint32_t GetCurrentProcessId() noexcept = 0;
  // The calling thread's last error; calls that succeed leave it alone.
  virtual uint32_t GetLastError() noexcept = 0;
};

}  // namespace nuvelta::platform
