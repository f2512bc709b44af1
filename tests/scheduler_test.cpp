// The scheduler of the virtual notebook, alone and with its locks.
#include <gtest/gtest.h>

#include <set>

#include "notebook/machine/virtual_threads.h"

namespace nuvelta::test {
namespace {

using namespace virtual_notebook;
using namespace std::chrono_literals;
using Mode = Scheduler::Mode;

constexpr Nanoseconds kFirstMoment = 1'000'000'000s;

struct ThreadDesk {
  explicit ThreadDesk(Mode mode = Mode::kDeterministic, uint64_t seed = 1)
      : scheduler(mode, seed, kFirstMoment) {}
  Nanoseconds Passed() const { return scheduler.Now() - kFirstMoment; }

  Scheduler scheduler;
  FaultPlan faults{{}};
  Context context{scheduler, faults};
};

// Lets one waiter through each time that it is opened.
struct Turnstile final : Waitable {
  bool open = false;
  uint32_t passed = 0;

  bool Ready(uint32_t /*id*/) const override { return open; }
  void Take(uint32_t id) override {
    open = false;
    passed = id;
  }
  std::string Describe() const override { return "the turnstile"; }
};

void ForBothModes(const std::function<void(ThreadDesk&)>& body) {
  for (const Mode mode : {Mode::kDeterministic, Mode::kFree}) {
    for (uint64_t seed = 1; seed <= 8; ++seed) {
      SCOPED_TRACE((mode == Mode::kFree ? "free, seed " : "deterministic, seed ") +
                   std::to_string(seed));
      ThreadDesk desk(mode, seed);
      body(desk);
    }
  }
}

TEST(Scheduler, RepeatsTheOrderOfTurnsOfASeed) {
  const auto turns = [](uint64_t seed) {
    ThreadDesk desk(Mode::kDeterministic, seed);
    std::vector<uint32_t> order;
    for (int i = 0; i < 4; ++i) {
      desk.scheduler.Spawn("turn", 1, [&] {
        for (int turn = 0; turn < 8; ++turn) {
          order.push_back(Scheduler::CurrentThread());
          turn % 2 == 0 ? desk.scheduler.Yield() : desk.scheduler.Sleep(1ms);
        }
      });
    }
    desk.scheduler.Run();
    return order;
  };
  std::set<std::vector<uint32_t>> orders;
  for (uint64_t seed = 1; seed <= 5; ++seed) {
    const auto order = turns(seed);
    EXPECT_EQ(order, turns(seed));
    EXPECT_EQ(order.size(), 32U);
    orders.insert(order);
  }
  EXPECT_EQ(orders.size(), 5U);
}

TEST(Scheduler, JumpsToTheNextDueMoment) {
  ForBothModes([](ThreadDesk& desk) {
    const auto real = std::chrono::steady_clock::now();
    std::mutex mutex;
    std::vector<Nanoseconds> woken;
    const auto wake = [&] {
      const std::lock_guard lock(mutex);
      woken.push_back(desk.Passed());
    };
    Turnstile closed;
    desk.scheduler.Spawn("long", 1, [&] {
      desk.scheduler.Sleep(1000h);
      wake();
    });
    desk.scheduler.Spawn("short", 1, [&] {
      desk.scheduler.Sleep(3s);
      wake();
      EXPECT_FALSE(desk.scheduler.Wait(closed, 4s));
      wake();
    });
    desk.scheduler.Run();
    EXPECT_EQ(woken, (std::vector<Nanoseconds>{3s, 7s, 1000h}));
    EXPECT_LT(std::chrono::steady_clock::now() - real, 10s);
    EXPECT_EQ(desk.scheduler.Deadlock(), "");
  });
}

TEST(Scheduler, LetsOneWaiterThroughATurnstile) {
  ForBothModes([](ThreadDesk& desk) {
    Turnstile turnstile;
    std::atomic<uint32_t> through{0};
    std::atomic<int> timed_out{0};
    for (int i = 0; i < 3; ++i) {
      desk.scheduler.Spawn("waiter", 1, [&] {
        if (desk.scheduler.Wait(turnstile, 1h)) {
          EXPECT_EQ(desk.Passed(), 1s);
          through += Scheduler::CurrentThread();
        } else {
          EXPECT_EQ(desk.Passed(), 1h);
          ++timed_out;
        }
      });
    }
    desk.scheduler.Spawn("opener", 1, [&] {
      desk.scheduler.Sleep(1s);
      desk.scheduler.Change([&] { turnstile.open = true; });
    });
    desk.scheduler.Run();
    EXPECT_EQ(timed_out, 2);
    EXPECT_EQ(through, turnstile.passed);
    EXPECT_FALSE(turnstile.open);
  });
}

TEST(Scheduler, KeepsOthersOutOfACriticalSection) {
  ForBothModes([](ThreadDesk& desk) {
    VirtualThreads threads(desk.context);
    const auto section = threads.InitializeCriticalSectionAndSpinCount(0);
    std::atomic<int> inside{0};
    std::atomic<int> entries{0};
    for (int i = 0; i < 3; ++i) {
      desk.scheduler.Spawn("worker", 1, [&] {
        for (int entry = 0; entry < 5; ++entry) {
          threads.EnterCriticalSection(section);
          threads.EnterCriticalSection(section);
          EXPECT_EQ(++inside, 1);
          threads.LeaveCriticalSection(section);
          // Entered twice and left once: still its own.
          threads.Sleep(1000);
          --inside;
          ++entries;
          threads.LeaveCriticalSection(section);
        }
      });
    }
    desk.scheduler.Run();
    EXPECT_EQ(entries, 15);
    EXPECT_EQ(desk.Passed(), 15s);
  });
}

TEST(Scheduler, TellsTheRestOfAllOthers) {
  ForBothModes([](ThreadDesk& desk) {
    Turnstile gate;
    desk.scheduler.Spawn("watcher", 0, [&] {
      EXPECT_TRUE(desk.scheduler.WaitForRest(1h));
      EXPECT_EQ(desk.Passed(), 10s);
      desk.scheduler.Change([&] { gate.open = true; });
      EXPECT_FALSE(desk.scheduler.WaitForRest(1h));
      EXPECT_EQ(desk.Passed(), 10s + 1h);
    });
    desk.scheduler.Spawn("worker", 1, [&] {
      desk.scheduler.Sleep(10s);
      EXPECT_TRUE(desk.scheduler.Wait(gate, {}));
      desk.scheduler.Sleep(2h);
    });
    desk.scheduler.Run();
    EXPECT_EQ(desk.Passed(), 10s + 2h);
    EXPECT_EQ(desk.scheduler.Deadlock(), "");
  });
}

TEST(Scheduler, CutsWaitsShortWhenItIsNotToGoOn) {
  ForBothModes([](ThreadDesk& desk) {
    std::atomic<bool> over = false;
    desk.scheduler.AskWhetherToGoOn([](Nanoseconds now) { return now < kFirstMoment + 5s; });
    desk.scheduler.Spawn("director", 0, [&] {
      desk.scheduler.SleepUnlessCutShort(1h);
      EXPECT_TRUE(desk.scheduler.CutShort());
      desk.scheduler.WaitForRest(1h);
      EXPECT_LE(desk.Passed(), 10s);
      over = true;
    });
    desk.scheduler.Spawn("worker", 1, [&] {
      while (!over) desk.scheduler.Sleep(1s);
    });
    desk.scheduler.Run();
  });
}

TEST(Scheduler, UnwindsTheThreadsOfAKilledProcess) {
  struct Leaver {
    Scheduler& scheduler;
    std::atomic<int>& left;
    ~Leaver() {
      scheduler.Sleep(1h);  // must neither throw nor wait any more
      ++left;
    }
  };
  ForBothModes([](ThreadDesk& desk) {
    Turnstile closed;
    std::atomic<int> left{0};
    std::atomic<int> swallowed{0};
    std::atomic<int> survived{0};
    std::atomic<bool> last{false};
    desk.scheduler.Spawn("main", 1, [&] {
      EXPECT_THROW(desk.scheduler.Sleep(10h), ThreadKilled);
      desk.scheduler.AwaitLastOfProcess(1);
      EXPECT_EQ(left, 3);
      desk.scheduler.Sleep(1min);
      last = true;
    });
    desk.scheduler.Spawn("sleeper", 1, [&] {
      const Leaver leaver{desk.scheduler, left};
      desk.scheduler.Sleep(10h);
      ++survived;
    });
    desk.scheduler.Spawn("waiter", 1, [&] {
      const Leaver leaver{desk.scheduler, left};
      survived += desk.scheduler.Wait(closed, {}) ? 2 : 1;
    });
    desk.scheduler.Spawn("swallower", 1, [&] {
      const Leaver leaver{desk.scheduler, left};
      try {
        desk.scheduler.Sleep(10h);
      } catch (...) {
        ++swallowed;
      }
      desk.scheduler.Yield();
      ++survived;
    });
    desk.scheduler.Spawn("other process", 2, [&] {
      desk.scheduler.Sleep(1h);
      desk.scheduler.KillProcess(1);
      desk.scheduler.Sleep(1s);
      desk.scheduler.KillProcess(1);  // spares the one that saw the others off
      desk.scheduler.Sleep(2h);
    });
    desk.scheduler.Run();
    EXPECT_TRUE(last);
    EXPECT_EQ(swallowed, 1);
    EXPECT_EQ(survived, 0);
    EXPECT_EQ(desk.Passed(), 3h + 1s);
    EXPECT_EQ(desk.scheduler.Deadlock(), "");
  });
}

TEST(Scheduler, NamesWhoIsStuckAndWhatEscaped) {
  ForBothModes([](ThreadDesk& desk) {
    VirtualThreads threads(desk.context);
    const auto one = threads.InitializeCriticalSectionAndSpinCount(0);
    const auto two = threads.InitializeCriticalSectionAndSpinCount(0);
    const auto enter_both = [&](auto first, auto second) {
      threads.EnterCriticalSection(first);
      threads.Sleep(1000);
      threads.EnterCriticalSection(second);
      ADD_FAILURE() << "came through";
    };
    std::string escaped;
    desk.scheduler.OnEscape([&](const auto& thread, const auto& what) { escaped = thread + what; });
    desk.scheduler.Spawn("left", 1, [&] { enter_both(one, two); });
    desk.scheduler.Spawn("right", 1, [&] { enter_both(two, one); });
    desk.scheduler.Spawn("thrower", 1, [] { throw std::runtime_error(" threw"); });
    desk.scheduler.Run();
    EXPECT_EQ(desk.scheduler.Deadlock(),
              "\"left\" waits for critical section 257, held by thread 2; "
              "\"right\" waits for critical section 256, held by thread 1");
    EXPECT_EQ(escaped, "thrower threw");
  });
}

}  // namespace
}  // namespace nuvelta::test
