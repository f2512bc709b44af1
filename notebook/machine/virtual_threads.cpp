#include "notebook/machine/virtual_threads.h"

#include <utility>

namespace nuvelta::virtual_notebook {

using platform::CriticalSectionHandle;
using platform::EventHandle;

struct VirtualThreads::Event final : Waitable {
  uintptr_t number = 0;
  bool manual_reset = false;
  bool signalled = false;

  bool Ready(uint32_t /*id*/) const override { return signalled; }
  void Take(uint32_t /*id*/) override { signalled = signalled && manual_reset; }
  std::string Describe() const override { return "event " + std::to_string(number); }
};

struct VirtualThreads::CriticalSection final : Waitable {
  uintptr_t number = 0;
  uint32_t owner = 0;
  uint32_t depth = 0;

  bool Ready(uint32_t id) const override { return owner == 0 || owner == id; }
  void Take(uint32_t id) override {
    owner = id;
    ++depth;
  }
  bool IsRest() const override { return false; }
  std::string Describe() const override {
    return "critical section " + std::to_string(number) + ", held by thread " +
           std::to_string(owner);
  }
};

platform::ThreadHandle VirtualThreads::CreateThread(platform::ThreadProcedure procedure,
                                                    void* parameter, const char* name) {
  if (m_context.Fails("CreateThread")) return {};
  const uint32_t id =
      m_context.scheduler.Spawn(name, Scheduler::CurrentProcess(), [=] { procedure(parameter); });
  m_context.scheduler.Yield();
  return static_cast<platform::ThreadHandle>(id);
}

bool VirtualThreads::StartDetachedThread(std::function<void()> body, const char* name) {
  if (m_context.Fails("StartDetachedThread")) return false;
  m_context.scheduler.Spawn(name, Scheduler::CurrentProcess(), std::move(body));
  m_context.scheduler.Yield();
  return true;
}

EventHandle VirtualThreads::CreateEventW(bool manual_reset, bool initial_state) {
  if (m_context.Fails("CreateEventW")) return {};
  const std::lock_guard lock(m_mutex);
  auto event = std::make_shared<Event>();
  event->number = m_next_handle++;
  event->manual_reset = manual_reset;
  event->signalled = initial_state;
  m_events.emplace(event->number, event);
  return static_cast<EventHandle>(event->number);
}

std::shared_ptr<VirtualThreads::Event> VirtualThreads::FindEvent(EventHandle event) const {
  const std::lock_guard lock(m_mutex);
  const auto found = m_events.find(static_cast<uintptr_t>(event));
  return found == m_events.end() ? nullptr : found->second;
}

bool VirtualThreads::Signal(EventHandle handle, bool signalled) {
  const auto event = FindEvent(handle);
  if (event == nullptr) {
    Context::SetLastError(platform::kErrorInvalidHandle);
    return false;
  }
  m_context.scheduler.Change([&] { event->signalled = signalled; });
  return true;
}

bool VirtualThreads::SetEvent(EventHandle event) {
  return !m_context.Fails("SetEvent") && Signal(event, true);
}

bool VirtualThreads::ResetEvent(EventHandle event) {
  return !m_context.Fails("ResetEvent") && Signal(event, false);
}

bool VirtualThreads::CloseHandle(EventHandle event) noexcept {
  const std::lock_guard lock(m_mutex);
  return m_events.erase(static_cast<uintptr_t>(event)) != 0;
}

uint32_t VirtualThreads::WaitForSingleObject(EventHandle handle, uint32_t milliseconds) {
  if (m_context.Fails("WaitForSingleObject")) return platform::kWaitFailed;
  const auto event = FindEvent(handle);
  if (event == nullptr) {
    Context::SetLastError(platform::kErrorInvalidHandle);
    return platform::kWaitFailed;
  }
  std::optional<Nanoseconds> timeout;
  if (milliseconds != platform::kInfinite) timeout = std::chrono::milliseconds(milliseconds);
  return m_context.scheduler.Wait(*event, timeout) ? platform::kWaitObject0
                                                   : platform::kWaitTimeout;
}

CriticalSectionHandle VirtualThreads::InitializeCriticalSectionAndSpinCount(
    uint32_t /*spin_count*/) {
  const std::lock_guard lock(m_mutex);
  auto section = std::make_shared<CriticalSection>();
  section->number = m_next_handle++;
  m_sections.emplace(section->number, section);
  return static_cast<CriticalSectionHandle>(section->number);
}

void VirtualThreads::EnterCriticalSection(CriticalSectionHandle handle) {
  std::shared_ptr<CriticalSection> section;
  {
    const std::lock_guard lock(m_mutex);
    section = m_sections.at(static_cast<uintptr_t>(handle));
  }
  m_context.scheduler.Wait(*section, std::nullopt);
}

void VirtualThreads::LeaveCriticalSection(CriticalSectionHandle handle) noexcept {
  std::shared_ptr<CriticalSection> section;
  {
    const std::lock_guard lock(m_mutex);
    section = m_sections.at(static_cast<uintptr_t>(handle));
  }
  m_context.scheduler.Change([&] {
    if (--section->depth == 0) section->owner = 0;
  });
}

void VirtualThreads::Sleep(uint32_t milliseconds) {
  m_context.scheduler.Sleep(std::chrono::milliseconds(milliseconds));
}

uint32_t VirtualThreads::GetCurrentThreadId() noexcept {
  // Multiples of four, as the platform hands them out.
  return 0x1000 + 4 * Scheduler::CurrentThread();
}

uint32_t VirtualThreads::GetCurrentProcessId() noexcept { return Scheduler::CurrentProcess(); }

uint32_t VirtualThreads::GetLastError() noexcept { return Scheduler::ThreadWord(); }

void VirtualThreads::EndProcess() {
  const std::lock_guard lock(m_mutex);
  m_events.clear();
  m_sections.clear();
}

}  // namespace nuvelta::virtual_notebook
