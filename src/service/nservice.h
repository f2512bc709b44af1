// The service object: starts the task engine and turns system events into tasks.
#pragma once

#include <atomic>

#include "platform/types.h"

namespace nuvelta {

class NService {
 public:
  explicit NService(platform::EventHandle hServiceStopEvent)
      : m_hServiceStopEvent(hServiceStopEvent) {}

  // Service-main thread: starts the worker, queues the start-up task and blocks
  // until the stop event is signalled.
  void Run();

  // Dispatcher thread, on a stop control: tells the worker to exit. Needs no
  // object, so it is safe while ServiceMain tears the object down.
  static void stop();

  // Dispatcher thread: a network adapter's interface has arrived.
  static void dealDeviceArrive();

  // Power callback thread: the machine came back, quickly or from sleep. Both
  // give up what is queued in favour of a new task.
  static void dealQuickBoot();
  static void dealSleepResume();

 private:
  const platform::EventHandle m_hServiceStopEvent;
};

// Set while the service runs. A yes/no test for the other threads, no more.
extern std::atomic<NService*> g_pNService;

}  // namespace nuvelta
