#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <utility>

#include "notebook/machine/scheduler_thread.h"

namespace nuvelta::virtual_notebook {

namespace {

// A thread that stays in code of its own for so long hangs; nothing here takes
// a fraction of it.
constexpr std::chrono::seconds kHangAfter{60};

}  // namespace

thread_local Scheduler* Scheduler::t_scheduler = nullptr;
thread_local Scheduler::Thread* Scheduler::t_thread = nullptr;

Scheduler::Scheduler(Mode mode, uint64_t seed, Nanoseconds start)
    : m_mode(mode), m_random(seed), m_now(start.count()) {}

Scheduler::~Scheduler() {
  for (const auto& thread : m_threads) {
    if (thread->native.joinable()) thread->native.join();
  }
}

uint32_t Scheduler::Spawn(std::string name, uint32_t process, std::function<void()> body) {
  const std::lock_guard lock(m_mutex);
  ForgetEnded();
  auto thread = std::make_unique<Thread>();
  thread->name = std::move(name);
  thread->id = m_next_id++;
  thread->process = process;
  thread->body = std::move(body);
  // Its maker has not come to a step since, and does not know yet.
  thread->killed = process != 0 && process == m_killed_process;
  Thread& added = *thread;
  m_threads.push_back(std::move(thread));
  added.native = std::thread([this, &added] { ThreadMain(added); });
  if (m_started && m_mode == Mode::kFree) Dispatch();
  return added.id;
}

void Scheduler::OnEscape(
    std::function<void(const std::string& thread, const std::string& what)> handler) {
  m_on_escape = std::move(handler);
}

void Scheduler::AskWhetherToGoOn(std::function<bool(Nanoseconds now)> go_on) {
  m_go_on = std::move(go_on);
}

void Scheduler::Run() {
  std::unique_lock lock(m_mutex);
  m_started = true;
  Dispatch();
  uint64_t seen = m_steps;
  while (AnyAlive()) {
    if (m_all_ended.wait_for(lock, kHangAfter) == std::cv_status::timeout && seen == m_steps) {
      for (const auto& thread : m_threads) {
        if (thread->state != Thread::State::kRunning) continue;
        std::fprintf(stderr, "hang: thread \"%s\" does not come back from its own code\n",
                     thread->name.c_str());
      }
      std::_Exit(1);
    }
    seen = m_steps;
  }
  lock.unlock();
  for (const auto& thread : m_threads) {
    if (thread->native.joinable()) thread->native.join();
  }
}

void Scheduler::ThreadMain(Thread& thread) {
  t_scheduler = this;
  t_thread = &thread;
  bool killed = false;
  {
    std::unique_lock lock(m_mutex);
    WaitForBaton(lock, thread);
    killed = thread.killed;
  }
  try {
    if (!killed) thread.body();
  } catch (const ThreadKilled&) {
    // The end of a thread whose process has gone.
  } catch (...) {
    if (m_on_escape) m_on_escape(thread.name, DescribeCurrentException());
  }
  thread.body = nullptr;
  const std::lock_guard lock(m_mutex);
  thread.state = Thread::State::kEnded;
  --m_running;
  Dispatch();
  if (!AnyAlive()) m_all_ended.notify_all();
}

void Scheduler::WaitForBaton(std::unique_lock<std::mutex>& lock, Thread& thread) {
  thread.baton.wait(lock, [&] { return thread.granted; });
  thread.granted = false;
}

// The thread's state says what it waits for; returns when it is picked.
void Scheduler::SwitchAway(std::unique_lock<std::mutex>& lock, Thread& thread) {
  --m_running;
  Dispatch();
  WaitForBaton(lock, thread);
  thread.object = nullptr;
  thread.for_rest = false;
  thread.can_be_cut_short = false;
  thread.due.reset();
}

void Scheduler::Dispatch() {
  if (!m_started) return;
  if (m_on_step && m_running == 0) m_on_step();
  if (m_go_on && !m_cut_short && !m_go_on(Now())) m_cut_short = true;
  for (;;) {
    if (m_mode == Mode::kDeterministic && m_running > 0) return;
    const std::vector<Thread*> candidates = Candidates();
    if (candidates.empty()) {
      if (m_running > 0 || !AnyAlive()) return;
      if (!AdvanceClock()) ReportDeadlock();
      continue;
    }
    Grant(*candidates[candidates.size() == 1 ? 0 : m_random() % candidates.size()]);
    if (m_mode == Mode::kDeterministic) return;
  }
}

std::vector<Scheduler::Thread*> Scheduler::Candidates() const {
  std::vector<Thread*> candidates;
  const Nanoseconds now = Now();
  for (const auto& thread : m_threads) {
    const bool waiting_is_over = thread->state == Thread::State::kWaiting &&
                                 (thread->killed || (thread->can_be_cut_short && m_cut_short) ||
                                  (thread->due && *thread->due <= now) ||
                                  (thread->object != nullptr && thread->object->Ready(thread->id)));
    if (thread->state == Thread::State::kReady || waiting_is_over) {
      candidates.push_back(thread.get());
    }
  }
  return candidates;
}

void Scheduler::Grant(Thread& thread) {
  thread.signalled = false;
  if (thread.state == Thread::State::kWaiting && !thread.killed && thread.object != nullptr &&
      thread.object->Ready(thread.id)) {
    thread.object->Take(thread.id);
    thread.signalled = true;
  }
  thread.state = Thread::State::kRunning;
  thread.granted = true;
  ++m_running;
  m_steps.fetch_add(1, std::memory_order_relaxed);
  thread.baton.notify_one();
}

// Moves the clock to the next due moment, or tells those who wait for the rest
// of all others that it has come. False when neither is possible.
bool Scheduler::AdvanceClock() {
  std::optional<Nanoseconds> next;
  bool others_due = false;
  Thread* for_rest = nullptr;
  for (const auto& thread : m_threads) {
    if (thread->state != Thread::State::kWaiting) continue;
    if (thread->for_rest) for_rest = thread.get();
    if (!thread->due) continue;
    others_due = others_due || !thread->for_rest;
    next = next ? std::min(*next, *thread->due) : *thread->due;
  }
  if (for_rest != nullptr && !others_due && !AnyoneStuck()) {
    Grant(*for_rest);
    for_rest->signalled = true;
    return true;
  }
  if (!next || !others_due) return false;
  m_now.store(next->count(), std::memory_order_relaxed);
  return true;
}

bool Scheduler::AnyoneStuck() const {
  return std::ranges::any_of(m_threads, [](const auto& thread) {
    return thread->state == Thread::State::kWaiting && thread->object != nullptr &&
           !thread->object->IsRest();
  });
}

void Scheduler::ReportDeadlock() {
  bool killed = false;
  for (const auto& thread : m_threads) {
    if (thread->state != Thread::State::kWaiting) continue;
    if (thread->object != nullptr) AddWaiting(m_deadlock, *thread);
    thread->killed = !thread->reprieved;
    killed = killed || thread->killed;
  }
  // Those who wait for the others of their process to end cannot be the last.
  if (!killed) std::abort();
}

std::string Scheduler::DescribeWaiting(uint32_t process) const {
  const std::lock_guard lock(m_mutex);
  std::string text;
  for (const auto& thread : m_threads) {
    const bool waits = thread->state == Thread::State::kWaiting && thread->object != nullptr;
    if (waits && thread->process == process) AddWaiting(text, *thread);
  }
  return text;
}

void Scheduler::AddWaiting(std::string& text, const Thread& thread) {
  if (!text.empty()) text += "; ";
  text += "\"" + thread.name + "\" waits for " + thread.object->Describe();
}

// Keeps the list short in a story with many short-lived threads.
void Scheduler::ForgetEnded() {
  std::erase_if(m_threads, [](const auto& thread) {
    if (thread->state != Thread::State::kEnded) return false;
    thread->native.join();
    return true;
  });
}

std::string Scheduler::DescribeCurrentException() {
  try {
    throw;
  } catch (const std::exception& error) {
    return error.what();
  } catch (...) {
    return "an exception that is no std::exception";
  }
}

bool Scheduler::AnyAlive() const {
  return std::ranges::any_of(
      m_threads, [](const auto& thread) { return thread->state != Thread::State::kEnded; });
}

}  // namespace nuvelta::virtual_notebook
