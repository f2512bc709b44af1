#include <memory>
#include <system_error>
#include <thread>

#include "platform/threads.h"
#include "platform/windows/win32.h"
#include "platform/windows/windows_platform.h"

namespace nuvelta::windows {

namespace {

using platform::CriticalSectionHandle;
using platform::EventHandle;
using platform::ThreadHandle;

class Win32Threads final : public platform::Threads {
 public:
  ThreadHandle CreateThread(platform::ThreadProcedure procedure, void* parameter,
                            const char* /*name*/) override {
    // The two types differ in the name of a 32-bit integer only.
    return FromNative<ThreadHandle>(::CreateThread(
        nullptr, 0, reinterpret_cast<LPTHREAD_START_ROUTINE>(procedure), parameter, 0, nullptr));
  }

  bool StartDetachedThread(std::function<void()> body, const char* /*name*/) override {
    try {
      std::thread(std::move(body)).detach();
      return true;
    } catch (const std::system_error&) {
      return false;
    }
  }

  EventHandle CreateEventW(bool manual_reset, bool initial_state) override {
    return FromNative<EventHandle>(::CreateEventW(nullptr, manual_reset ? TRUE : FALSE,
                                                  initial_state ? TRUE : FALSE, nullptr));
  }

  bool SetEvent(EventHandle event) override { return ::SetEvent(ToNative<HANDLE>(event)) != FALSE; }

  bool ResetEvent(EventHandle event) override {
    return ::ResetEvent(ToNative<HANDLE>(event)) != FALSE;
  }

  bool CloseHandle(EventHandle event) noexcept override {
    return ::CloseHandle(ToNative<HANDLE>(event)) != FALSE;
  }

  uint32_t WaitForSingleObject(EventHandle event, uint32_t milliseconds) override {
    return ::WaitForSingleObject(ToNative<HANDLE>(event), milliseconds);
  }

  CriticalSectionHandle InitializeCriticalSectionAndSpinCount(uint32_t spin_count) override {
    auto section = std::make_unique<CRITICAL_SECTION>();
    ::InitializeCriticalSectionAndSpinCount(section.get(), spin_count);
    return FromNative<CriticalSectionHandle>(section.release());
  }

  void EnterCriticalSection(CriticalSectionHandle section) override {
    ::EnterCriticalSection(ToNative<CRITICAL_SECTION*>(section));
  }

  void LeaveCriticalSection(CriticalSectionHandle section) noexcept override {
    ::LeaveCriticalSection(ToNative<CRITICAL_SECTION*>(section));
  }

  void Sleep(uint32_t milliseconds) override { ::Sleep(milliseconds); }
  uint32_t GetCurrentThreadId() noexcept override { return ::GetCurrentThreadId(); }
  uint32_t GetCurrentProcessId() noexcept override { return ::GetCurrentProcessId(); }
  uint32_t GetLastError() noexcept override { return ::GetLastError(); }
};

}  // namespace

platform::Threads& WindowsThreads() { return Immortal<Win32Threads>(); }

}  // namespace nuvelta::windows
