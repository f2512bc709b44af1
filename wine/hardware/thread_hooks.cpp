// Threads, events and waits of the executable. The service's own threads take
// part in story time; those of the log library do not, but a thread that it has
// just been given counts as at work until it first waits, so that what it does at
// once (log retention) is done before time goes on.
#include <process.h>
#include <windows.h>

#include <algorithm>
#include <memory>
#include <mutex>
#include <set>
#include <utility>

#include "wine/hardware/hooks.h"
#include "wine/hardware/import_table.h"
#include "wine/hardware/last_error.h"
#include "wine/hardware/played_story.h"
#include "wine/hardware/story_clock.h"

namespace nuvelta::wine {

namespace {

using BeginThread = uintptr_t(__cdecl*)(void*, unsigned, unsigned(__stdcall*)(void*), void*,
                                        unsigned, unsigned*);

decltype(&CreateThread) g_create_thread;
BeginThread g_begin_thread;
using EndThread = void(__cdecl*)(unsigned);
EndThread g_end_thread;
decltype(&CreateEventW) g_create_event;
decltype(&SetEvent) g_set_event;
decltype(&ResetEvent) g_reset_event;
decltype(&CloseHandle) g_close_handle;
decltype(&WaitForSingleObject) g_wait;
decltype(&WaitForMultipleObjects) g_wait_many;
decltype(&Sleep) g_sleep;

// A thread of the log library that has not waited yet.
thread_local bool t_fresh = false;

void NoLongerFresh() {
  if (!std::exchange(t_fresh, false)) return;
  StoryClock::Get().Leave();
}

// The events that the service has made; the C++ runtime's own are of other kinds.
class ServiceEvents {
 public:
  void Add(HANDLE event) {
    const KeepLastError keep;
    const std::lock_guard lock(m_mutex);
    m_events.insert(event);
  }
  void Remove(HANDLE event) {
    const KeepLastError keep;
    const std::lock_guard lock(m_mutex);
    m_events.erase(event);
  }
  bool Contains(HANDLE event) {
    const KeepLastError keep;
    const std::lock_guard lock(m_mutex);
    return m_events.contains(event);
  }

 private:
  std::mutex m_mutex;
  std::set<HANDLE> m_events;
};

ServiceEvents& Events() {
  static auto* const events = new ServiceEvents;
  return *events;
}

struct ThreadStart {
  LPTHREAD_START_ROUTINE routine;
  void* parameter;
};

DWORD WINAPI RunThread(void* parameter) {
  const std::unique_ptr<ThreadStart> start(static_cast<ThreadStart*>(parameter));
  StoryClock::Get().Join(true);
  const DWORD result = start->routine(start->parameter);
  StoryClock::Get().Leave();
  return result;
}

HANDLE WINAPI MakeThread(SECURITY_ATTRIBUTES* attributes, SIZE_T stack,
                         LPTHREAD_START_ROUTINE routine, void* parameter, DWORD flags, DWORD* id) {
  // The crash watchdog, the only one that says how much stack it needs. It keeps real
  // time, and its event and waits too pass by the functions below.
  if ((flags & STACK_SIZE_PARAM_IS_A_RESERVATION) != 0) {
    return g_create_thread(attributes, stack, routine, parameter, flags, id);
  }
  if (PlayedStory::Current()->Fails("CreateThread")) return nullptr;
  auto start = std::make_unique<ThreadStart>(ThreadStart{routine, parameter});
  StoryClock::Get().BeforeStart();
  return g_create_thread(attributes, stack, RunThread, start.release(), flags, id);
}

struct RuntimeThreadStart {
  unsigned(__stdcall* routine)(void*);
  void* parameter;
};

unsigned __stdcall RunRuntimeThread(void* parameter) {
  const std::unique_ptr<RuntimeThreadStart> start(static_cast<RuntimeThreadStart*>(parameter));
  StoryClock::Get().Join(true);
  t_fresh = true;
  const unsigned result = start->routine(start->parameter);
  NoLongerFresh();
  return result;
}

uintptr_t __cdecl MakeRuntimeThread(void* security, unsigned stack,
                                    unsigned(__stdcall* routine)(void*), void* parameter,
                                    unsigned flags, unsigned* id) {
  auto start = std::make_unique<RuntimeThreadStart>(RuntimeThreadStart{routine, parameter});
  StoryClock::Get().BeforeStart();
  return g_begin_thread(security, stack, RunRuntimeThread, start.release(), flags, id);
}

// How the C++ runtime's threads end: their routine never returns.
void __cdecl EndRuntimeThread(unsigned result) {
  NoLongerFresh();
  g_end_thread(result);
}

HANDLE WINAPI MakeEvent(SECURITY_ATTRIBUTES* attributes, BOOL manual_reset, BOOL initial_state,
                        LPCWSTR name) {
  if (PlayedStory::Current()->Fails("CreateEventW")) return nullptr;
  const HANDLE event = g_create_event(attributes, manual_reset, initial_state, name);
  if (event != nullptr) Events().Add(event);
  return event;
}

BOOL WINAPI Signal(HANDLE event) {
  if (!Events().Contains(event)) return g_set_event(event);
  if (PlayedStory::Current()->Fails("SetEvent")) return FALSE;
  BOOL result = FALSE;
  DWORD error = GetLastError();
  StoryClock::Get().Change([&] {
    result = g_set_event(event);
    if (result == FALSE) error = GetLastError();
  });
  SetLastError(error);
  return result;
}

BOOL WINAPI Reset(HANDLE event) {
  if (Events().Contains(event) && PlayedStory::Current()->Fails("ResetEvent")) return FALSE;
  return g_reset_event(event);
}

BOOL WINAPI Close(HANDLE handle) {
  Events().Remove(handle);
  return g_close_handle(handle);
}

DWORD WINAPI Wait(HANDLE object, DWORD milliseconds) {
  if (!Events().Contains(object) || !StoryClock::Get().TakesPart()) {
    if (milliseconds != 0) NoLongerFresh();
    return g_wait(object, milliseconds);
  }
  if (PlayedStory::Current()->Fails("WaitForSingleObject")) return WAIT_FAILED;
  std::optional<Duration> timeout;
  if (milliseconds != INFINITE) timeout = std::chrono::milliseconds(milliseconds);
  const bool signalled =
      StoryClock::Get().Await([&] { return g_wait(object, 0) == WAIT_OBJECT_0; }, timeout);
  return signalled ? WAIT_OBJECT_0 : WAIT_TIMEOUT;
}

DWORD WINAPI WaitForMany(DWORD count, const HANDLE* objects, BOOL all, DWORD milliseconds) {
  if (milliseconds != 0) NoLongerFresh();
  return g_wait_many(count, objects, all, milliseconds);
}

void WINAPI Pause(DWORD milliseconds) {
  if (milliseconds == 0) return g_sleep(0);
  if (t_fresh || !StoryClock::Get().TakesPart()) {
    NoLongerFresh();
    return g_sleep(milliseconds);
  }
  StoryClock::Get().Await([] { return false; }, std::chrono::milliseconds(milliseconds));
}

}  // namespace

void InstallThreadHooks() {
  g_create_thread = Replace("kernel32.dll", "CreateThread", MakeThread);
  g_begin_thread = Replace("msvcrt.dll", "_beginthreadex", MakeRuntimeThread);
  g_end_thread = Replace("msvcrt.dll", "_endthreadex", EndRuntimeThread);
  g_create_event = Replace("kernel32.dll", "CreateEventW", MakeEvent);
  g_set_event = Replace("kernel32.dll", "SetEvent", Signal);
  g_reset_event = Replace("kernel32.dll", "ResetEvent", Reset);
  g_close_handle = Replace("kernel32.dll", "CloseHandle", Close);
  g_wait = Replace("kernel32.dll", "WaitForSingleObject", Wait);
  g_wait_many = Replace("kernel32.dll", "WaitForMultipleObjects", WaitForMany);
  g_sleep = Replace("kernel32.dll", "Sleep", Pause);
}

}  // namespace nuvelta::wine
