// Threads and time of the virtual notebook. The threads are real. In the
// deterministic mode one runs at a time: at every call below the scheduler picks
// the next one from a seeded generator, and when all wait it jumps the clock to
// the next due moment. In the free mode all that can run do, and the clock jumps
// when all wait.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace nuvelta::virtual_notebook {

using Nanoseconds = std::chrono::nanoseconds;

// Thrown out of a blocking call of a thread whose process has been ended. No
// std::exception: a handler for those must not swallow it.
struct ThreadKilled {};

// Something a thread can wait for. Its state is changed only inside
// Scheduler::Change, and all members are called under the scheduler's lock.
class Waitable {
 public:
  virtual ~Waitable() = default;
  // Whether thread `id` may go on now.
  virtual bool Ready(uint32_t id) const = 0;
  // Called once for each thread that goes on because of Ready.
  virtual void Take(uint32_t /*id*/) {}
  // Whether a thread may rest here: wait until something happens outside. Nobody
  // rests in front of a lock.
  virtual bool IsRest() const { return true; }
  // For the report of a deadlock: "event 3", "the stop event".
  virtual std::string Describe() const = 0;
};

class Scheduler {
 public:
  enum class Mode { kDeterministic, kFree };

  Scheduler(Mode mode, uint64_t seed, Nanoseconds start);
  ~Scheduler();
  Scheduler(const Scheduler&) = delete;
  Scheduler& operator=(const Scheduler&) = delete;

  // Adds a thread of process `process` (0: the notebook's own). Its id is unique
  // and depends only on the order of calls. An exception that leaves `body`,
  // other than ThreadKilled, is handed to the escape handler.
  uint32_t Spawn(std::string name, uint32_t process, std::function<void()> body);
  // Called on the thread itself, before any other thread of its process goes on.
  void OnEscape(std::function<void(const std::string& thread, const std::string& what)> handler);

  // `go_on` is asked at every hand-over, under the scheduler's lock, with the time.
  // Once it has answered false, the waits that say so below are cut short.
  void AskWhetherToGoOn(std::function<bool(Nanoseconds now)> go_on);
  bool CutShort() const { return m_cut_short; }

  // Host thread only: runs until every thread has ended.
  void Run();

  // In scheduled_calls.cpp, to ThreadWord: the calls that scheduled threads make. Those
  // that may throw ThreadKilled do so only outside of stack unwinding.

  // Lets another thread go first. Throws ThreadKilled.
  void Yield();
  // True when the object became ready, false when the time ran out; no limit
  // when `timeout` is empty. Throws ThreadKilled.
  bool Wait(Waitable& object, std::optional<Nanoseconds> timeout);
  // Throws ThreadKilled.
  void Sleep(Nanoseconds duration);
  // A sleep that can be cut short. Throws ThreadKilled.
  void SleepUnlessCutShort(Nanoseconds duration);
  // Waits until no other thread can go on by itself. False when the time ran out
  // first. Can be cut short. Throws ThreadKilled.
  bool WaitForRest(Nanoseconds timeout);
  // Runs `change` under the lock, then lets the threads that it made ready go
  // on. Never throws ThreadKilled. Also allowed on threads not scheduled.
  void Change(const std::function<void()>& change) noexcept;

  // Ends every thread of a process but the calling one.
  void KillProcess(uint32_t process);
  // Waits until the calling thread is the last of its process; it is itself
  // reprieved when it was killed.
  void AwaitLastOfProcess(uint32_t process);

  // For checks in the deterministic mode, from a scheduled thread: `observer` is
  // called at every hand-over from now on, by the thread that gives up its turn,
  // before the next one is picked. It runs under the scheduler's lock and may call
  // only what is static here. Null ends it.
  static void OnStep(std::function<void()> observer);

  // The calling thread; 0 when it is not scheduled.
  static uint32_t CurrentThread();
  static uint32_t CurrentProcess();
  // A word of the calling thread's own, for the last error.
  static uint32_t& ThreadWord();

  // Since the epoch of the system clock.
  Nanoseconds Now() const { return Nanoseconds(m_now.load(std::memory_order_relaxed)); }

  // Empty, or who waited for what when nothing could go on any more.
  const std::string& Deadlock() const { return m_deadlock; }
  // Who of a process waits for what now.
  std::string DescribeWaiting(uint32_t process) const;
  // What the exception being handled says of itself.
  static std::string DescribeCurrentException();

  // How often a thread was picked.
  uint64_t Steps() const { return m_steps.load(std::memory_order_relaxed); }

 private:
  struct Thread;                               // scheduler_thread.h
  static thread_local Scheduler* t_scheduler;  // null on a thread that is not scheduled
  static thread_local Thread* t_thread;

  void ThreadMain(Thread& thread);
  void WaitForBaton(std::unique_lock<std::mutex>& lock, Thread& thread);
  void SwitchAway(std::unique_lock<std::mutex>& lock, Thread& thread);
  void Dispatch();
  std::vector<Thread*> Candidates() const;
  void Grant(Thread& thread);
  bool AdvanceClock();
  void ReportDeadlock();
  void ForgetEnded();
  bool AnyAlive() const;
  bool AnyoneStuck() const;
  static void AddWaiting(std::string& text, const Thread& thread);

  const Mode m_mode;
  std::mt19937_64 m_random;
  mutable std::mutex m_mutex;
  std::condition_variable m_all_ended;
  std::vector<std::unique_ptr<Thread>> m_threads;
  std::atomic<int64_t> m_now;
  std::atomic<uint64_t> m_steps{0};
  uint32_t m_running = 0;
  uint32_t m_next_id = 1;
  bool m_started = false;
  uint32_t m_killed_process = 0;  // the last one
  std::string m_deadlock;
  std::function<void(const std::string&, const std::string&)> m_on_escape;
  std::function<void()> m_on_step;
  std::function<bool(Nanoseconds)> m_go_on;
  std::atomic<bool> m_cut_short = false;
};

}  // namespace nuvelta::virtual_notebook
