// The scheduler's own record of a thread.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <thread>

#include "notebook/machine/scheduler.h"

namespace nuvelta::virtual_notebook {

struct Scheduler::Thread {
  enum class State { kReady, kRunning, kWaiting, kEnded };

  std::string name;
  uint32_t id = 0;
  uint32_t process = 0;
  std::function<void()> body;
  State state = State::kReady;
  Waitable* object = nullptr;      // while waiting: for this,
  bool for_rest = false;           // or for the rest of all others,
  bool can_be_cut_short = false;   // or for the story to be cut short,
  std::optional<Nanoseconds> due;  // or until this moment
  bool signalled = false;          // how the last wait ended
  bool killed = false;
  bool reprieved = false;  // not to be killed any more
  bool granted = false;
  uint32_t word = 0;
  std::condition_variable baton;
  std::thread native;
};

}  // namespace nuvelta::virtual_notebook
