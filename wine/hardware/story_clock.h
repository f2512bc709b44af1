// Story time inside the service's process. It stands still while any thread that
// takes part is at work, and jumps to the next due moment when all of them wait:
// a minute of waiting takes milliseconds, and the order of what happens does not
// depend on how fast the machine is.
#pragma once

#include <windows.h>

#include <condition_variable>
#include <functional>
#include <list>
#include <map>
#include <mutex>
#include <optional>

#include "notebook/model/scenario.h"

namespace nuvelta::wine {

using virtual_notebook::Duration;

class StoryClock {
 public:
  // The one of this process; never destroyed, for threads outlive main.
  static StoryClock& Get();

  // Story time since the story's begin.
  Duration Now();

  // Story time goes on from `now`; when nobody is at work and no timer is due
  // before the moment that `next` answers, `play` is called on the clock's own
  // thread, once that moment has come. Once `next` answers nothing and no timer is
  // left, or none before `rest`, `at_rest` is called once with whether the service
  // has come to rest.
  struct Script {
    std::function<std::optional<Duration>()> next;
    std::function<void()> play;
    Duration rest{};
    std::function<void(bool rests)> at_rest;
  };
  void Begin(Duration now, Script script);

  // The calling thread takes part from now on, or no longer. BeforeStart is for a
  // thread that is about to be made: it counts as at work until it has joined.
  void BeforeStart();
  void Join(bool counted);
  void Leave();
  bool TakesPart() const;

  // Runs `work` on a thread of its own that takes part.
  void Spawn(std::function<void()> work);
  // The same `after` from now.
  void SpawnLater(Duration after, std::function<void()> work);

  // Waits until `ready` holds; false when `timeout` passes first. `ready` is asked
  // under the clock's lock; when it answers true the waiter has been served.
  // Only for threads that take part.
  bool Await(const std::function<bool()>& ready, std::optional<Duration> timeout);
  // Does `change` under the clock's lock; waiters may be ready behind it.
  void Change(const std::function<void()>& change);

  // Lets story time stand still: nothing becomes due until Thaw.
  void Freeze();
  void Thaw();

 private:
  struct Waiter;

  StoryClock() = default;
  [[noreturn]] void Run();
  void Step(std::unique_lock<std::mutex>& lock);
  void AtRest(std::unique_lock<std::mutex>& lock, bool rests);
  void Serve();
  void OneLess();

  std::mutex m_mutex;
  std::condition_variable m_idle;
  Script m_script;
  Duration m_now{};
  bool m_over = false;  // at_rest has been called
  unsigned m_frozen = 0;
  unsigned m_at_work = 0;
  uint64_t m_changes = 0;
  std::list<Waiter*> m_waiters;  // in order of arrival
  std::multimap<Duration, std::function<void()>> m_timers;
};

}  // namespace nuvelta::wine
