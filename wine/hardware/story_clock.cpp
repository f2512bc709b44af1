#include "wine/hardware/story_clock.h"

#include <thread>
#include <utility>

#include "wine/hardware/last_error.h"

namespace nuvelta::wine {

namespace {

// Real time for the threads that do not take part, above all the log's writer.
constexpr std::chrono::milliseconds kGrace{1};

thread_local bool t_takes_part = false;

}  // namespace

struct StoryClock::Waiter {
  const std::function<bool()>& ready;
  bool served = false;
  bool timed_out = false;
  std::condition_variable woken{};
};

StoryClock& StoryClock::Get() {
  static auto* const clock = new StoryClock;
  return *clock;
}

Duration StoryClock::Now() {
  const KeepLastError keep;
  const std::lock_guard lock(m_mutex);
  return m_now;
}

void StoryClock::Begin(Duration now, Script script) {
  const std::lock_guard lock(m_mutex);
  m_now = now;
  m_script = std::move(script);
  std::thread([this] { Run(); }).detach();
}

void StoryClock::BeforeStart() {
  const KeepLastError keep;
  const std::lock_guard lock(m_mutex);
  ++m_at_work;
}

void StoryClock::Join(bool counted) {
  const KeepLastError keep;
  const std::lock_guard lock(m_mutex);
  if (!counted) ++m_at_work;
  t_takes_part = true;
}

void StoryClock::Leave() {
  const KeepLastError keep;
  const std::lock_guard lock(m_mutex);
  t_takes_part = false;
  OneLess();
}

bool StoryClock::TakesPart() const { return t_takes_part; }

void StoryClock::Spawn(std::function<void()> work) {
  const KeepLastError keep;
  BeforeStart();
  std::thread([this, work = std::move(work)] {
    Join(true);
    work();
    Leave();
  }).detach();
}

void StoryClock::SpawnLater(Duration after, std::function<void()> work) {
  const KeepLastError keep;
  const std::lock_guard lock(m_mutex);
  ++m_changes;
  // Timers run under the lock, and a thread counts as at work before it is made.
  m_timers.emplace(m_now + after, [this, work = std::move(work)] {
    ++m_at_work;
    std::thread([this, work] {
      Join(true);
      work();
      Leave();
    }).detach();
  });
  m_idle.notify_one();
}

bool StoryClock::Await(const std::function<bool()>& ready, std::optional<Duration> timeout) {
  const KeepLastError keep;
  std::unique_lock lock(m_mutex);
  if (ready()) return true;
  if (timeout && *timeout <= Duration::zero()) return false;
  Waiter waiter{.ready = ready};
  const auto place = m_waiters.insert(m_waiters.end(), &waiter);
  auto timer = m_timers.end();
  if (timeout) {
    timer = m_timers.emplace(m_now + *timeout, [&] {
      waiter.timed_out = true;
      ++m_at_work;
      waiter.woken.notify_one();
    });
  }
  OneLess();
  waiter.woken.wait(lock, [&] { return waiter.served || waiter.timed_out; });
  m_waiters.erase(place);
  // A timer that has come due is gone already.
  if (timeout && !waiter.timed_out) m_timers.erase(timer);
  return waiter.served;
}

void StoryClock::Change(const std::function<void()>& change) {
  const std::lock_guard lock(m_mutex);
  change();
  Serve();
}

// Whoever is served counts as at work at once, so that time cannot jump between
// the signal and the waiter's next step.
void StoryClock::Serve() {
  ++m_changes;
  for (Waiter* waiter : m_waiters) {
    if (waiter->served || waiter->timed_out || !waiter->ready()) continue;
    waiter->served = true;
    ++m_at_work;
    waiter->woken.notify_one();
  }
}

void StoryClock::OneLess() {
  ++m_changes;
  if (--m_at_work == 0) m_idle.notify_one();
}

void StoryClock::Freeze() {
  const std::lock_guard lock(m_mutex);
  ++m_frozen;
}

void StoryClock::Thaw() {
  const std::lock_guard lock(m_mutex);
  if (m_frozen > 0) --m_frozen;
  m_idle.notify_one();
}

void StoryClock::Run() {
  std::unique_lock lock(m_mutex);
  for (;;) {
    const auto idle = [this] { return m_at_work == 0 && m_frozen == 0; };
    m_idle.wait(lock, idle);
    const uint64_t before = m_changes;
    lock.unlock();
    std::this_thread::sleep_for(kGrace);
    lock.lock();
    if (idle() && m_changes == before) Step(lock);
  }
}

// Nobody is at work: the next thing happens.
void StoryClock::Step(std::unique_lock<std::mutex>& lock) {
  const std::optional<Duration> next = m_over ? std::nullopt : m_script.next();
  const auto timer = m_timers.begin();
  if (timer != m_timers.end() && (!next || timer->first <= *next)) {
    if (!next && !m_over && timer->first > m_script.rest) return AtRest(lock, false);
    const auto work = std::move(timer->second);
    m_now = std::max(m_now, timer->first);
    m_timers.erase(timer);
    work();
  } else if (next) {
    m_now = std::max(m_now, *next);
    lock.unlock();
    m_script.play();
    lock.lock();
  } else if (!m_over) {
    AtRest(lock, true);
  } else {
    // Only somebody who does not take part can move anything now.
    const uint64_t seen = m_changes;
    m_idle.wait(lock, [&] { return m_changes != seen; });
  }
}

void StoryClock::AtRest(std::unique_lock<std::mutex>& lock, bool rests) {
  m_over = true;
  lock.unlock();
  m_script.at_rest(rests);
  lock.lock();
}

}  // namespace nuvelta::wine
