#include "lives/watched_threads.h"

namespace nuvelta::explore {

using platform::CriticalSectionHandle;
using platform::EventHandle;
using virtual_notebook::Scheduler;

uint32_t WatchedThreads::RunWorker(void* launch) {
  const Launch& worker = *static_cast<const Launch*>(launch);
  worker.watch.tasks.OnWorker(Scheduler::CurrentThread());
  return worker.procedure(worker.manager);
}

// The worker is the only thread that the service makes in this way.
platform::ThreadHandle WatchedThreads::CreateThread(platform::ThreadProcedure procedure,
                                                    void* parameter, const char* name) {
  m_watch.OnManager(static_cast<const CTaskManager*>(parameter));
  m_launches.push_back({.watch = m_watch, .procedure = procedure, .manager = parameter});
  const platform::ThreadHandle thread =
      VirtualThreads::CreateThread(RunWorker, &m_launches.back(), name);
  if (m_on && thread == platform::ThreadHandle{}) m_watch.runs.OnNoWorker();
  return thread;
}

EventHandle WatchedThreads::CreateEventW(bool manual_reset, bool initial_state) {
  const EventHandle event = VirtualThreads::CreateEventW(manual_reset, initial_state);
  if (m_on && event == EventHandle{}) m_watch.OnNoEvent(manual_reset);
  return event;
}

bool WatchedThreads::SetEvent(EventHandle event) {
  if (m_on) {
    m_watch.OnSignal(Scheduler::CurrentThread());
    // Refused or not: what is checked is that the service asks for it.
    m_watch.wakes.OnSet(event);
  }
  return VirtualThreads::SetEvent(event);
}

bool WatchedThreads::ResetEvent(EventHandle event) {
  if (m_on) m_watch.wakes.OnReset(event);
  return VirtualThreads::ResetEvent(event);
}

uint32_t WatchedThreads::WaitForSingleObject(EventHandle event, uint32_t milliseconds) {
  const uint32_t thread = Scheduler::CurrentThread();
  const bool for_task = milliseconds == platform::kInfinite && m_watch.tasks.IsWorker(thread);
  if (m_on) {
    m_watch.locks.OnWait(thread);
    if (for_task) m_watch.wakes.OnWait(event);
    if (for_task) m_watch.tasks.OnWait();
  }
  const uint32_t result = VirtualThreads::WaitForSingleObject(event, milliseconds);
  if (m_on && for_task) m_watch.wakes.OnWaited(event);
  if (m_on && !for_task) m_watch.runs.OnWaited();
  return result;
}

CriticalSectionHandle WatchedThreads::InitializeCriticalSectionAndSpinCount(uint32_t spin_count) {
  const CriticalSectionHandle section =
      VirtualThreads::InitializeCriticalSectionAndSpinCount(spin_count);
  if (m_on) m_watch.locks.OnMade(static_cast<uintptr_t>(section));
  return section;
}

void WatchedThreads::EnterCriticalSection(CriticalSectionHandle section) {
  const uint32_t thread = Scheduler::CurrentThread();
  if (m_on) {
    m_watch.locks.OnEnter(thread, static_cast<uintptr_t>(section));
    m_watch.tasks.OnLock(thread);
  }
  VirtualThreads::EnterCriticalSection(section);
}

void WatchedThreads::LeaveCriticalSection(CriticalSectionHandle section) noexcept {
  if (m_on) m_watch.OnLeave(Scheduler::CurrentThread(), static_cast<uintptr_t>(section));
  VirtualThreads::LeaveCriticalSection(section);
}

void WatchedThreads::Sleep(uint32_t milliseconds) {
  const uint32_t thread = Scheduler::CurrentThread();
  if (m_on) {
    m_watch.locks.OnWait(thread);
    if (m_watch.tasks.IsWorker(thread) && m_watch.tasks.IsRunning()) m_watch.runs.OnRunEnds();
    m_watch.tasks.OnPause(thread, milliseconds);
  }
  VirtualThreads::Sleep(milliseconds);
  if (m_on) m_watch.tasks.OnPauseEnds(thread);
}

}  // namespace nuvelta::explore
