// What the scheduled threads themselves call.
#include <algorithm>
#include <exception>

#include "notebook/machine/scheduler_thread.h"

namespace nuvelta::virtual_notebook {

namespace {

void ThrowIfKilled(bool killed) {
  if (killed && std::uncaught_exceptions() == 0) throw ThreadKilled{};
}

}  // namespace

void Scheduler::Yield() {
  Thread& self = *t_thread;
  std::unique_lock lock(m_mutex);
  if (m_mode == Mode::kDeterministic) {
    self.state = Thread::State::kReady;
    SwitchAway(lock, self);
  }
  ThrowIfKilled(self.killed);
}

bool Scheduler::Wait(Waitable& object, std::optional<Nanoseconds> timeout) {
  Thread& self = *t_thread;
  std::unique_lock lock(m_mutex);
  ThrowIfKilled(self.killed);
  if (self.killed) return false;
  self.state = Thread::State::kWaiting;
  self.object = &object;
  if (timeout) self.due = Now() + *timeout;
  SwitchAway(lock, self);
  ThrowIfKilled(self.killed);
  return self.signalled;
}

void Scheduler::Sleep(Nanoseconds duration) {
  Thread& self = *t_thread;
  std::unique_lock lock(m_mutex);
  ThrowIfKilled(self.killed);
  if (self.killed) return;
  self.state = Thread::State::kWaiting;
  self.due = Now() + duration;
  SwitchAway(lock, self);
  ThrowIfKilled(self.killed);
}

void Scheduler::SleepUnlessCutShort(Nanoseconds duration) {
  {
    const std::lock_guard lock(m_mutex);
    t_thread->can_be_cut_short = true;
  }
  Sleep(duration);
}

bool Scheduler::WaitForRest(Nanoseconds timeout) {
  Thread& self = *t_thread;
  std::unique_lock lock(m_mutex);
  ThrowIfKilled(self.killed);
  self.state = Thread::State::kWaiting;
  self.for_rest = true;
  self.can_be_cut_short = true;
  self.due = Now() + timeout;
  SwitchAway(lock, self);
  ThrowIfKilled(self.killed);
  return self.signalled;
}

void Scheduler::Change(const std::function<void()>& change) noexcept {
  std::unique_lock lock(m_mutex);
  change();
  Thread* const self = t_scheduler == this ? t_thread : nullptr;
  if (m_mode == Mode::kFree) {
    Dispatch();
  } else if (std::uncaught_exceptions() > 0) {
    // It keeps its turn: what nobody catches ends a process before anything is
    // unwound, so that no other thread ever gets the locks that it lets go.
  } else if (self != nullptr && self->state == Thread::State::kRunning) {
    self->state = Thread::State::kReady;
    SwitchAway(lock, *self);
  }
}

void Scheduler::KillProcess(uint32_t process) {
  const std::lock_guard lock(m_mutex);
  m_killed_process = process;
  for (const auto& thread : m_threads) {
    if (thread->process != process || thread.get() == t_thread || thread->reprieved) continue;
    thread->killed = true;
  }
  if (m_mode == Mode::kFree) Dispatch();
}

void Scheduler::AwaitLastOfProcess(uint32_t process) {
  struct LastOfProcess final : Waitable {
    const Scheduler* scheduler = nullptr;
    uint32_t process = 0;
    bool Ready(uint32_t id) const override {
      return std::ranges::none_of(scheduler->m_threads, [&](const auto& thread) {
        return thread->process == process && thread->id != id &&
               thread->state != Thread::State::kEnded;
      });
    }
    std::string Describe() const override { return "the end of its process"; }
  };
  {
    const std::lock_guard lock(m_mutex);
    t_thread->killed = false;
    t_thread->reprieved = true;
  }
  LastOfProcess last;
  last.scheduler = this;
  last.process = process;
  Wait(last, std::nullopt);
}

void Scheduler::OnStep(std::function<void()> observer) {
  const std::lock_guard lock(t_scheduler->m_mutex);
  t_scheduler->m_on_step = std::move(observer);
}

uint32_t Scheduler::CurrentThread() { return t_thread == nullptr ? 0 : t_thread->id; }

uint32_t Scheduler::CurrentProcess() { return t_thread == nullptr ? 0 : t_thread->process; }

uint32_t& Scheduler::ThreadWord() {
  static thread_local uint32_t outside = 0;
  return t_thread == nullptr ? outside : t_thread->word;
}

}  // namespace nuvelta::virtual_notebook
