// Power events on their way to the service: one thread of the system's calls its
// routine, one event after the other.
#pragma once

#include <windows.h>

#include <cstdint>
#include <deque>
#include <optional>

namespace nuvelta::wine {

// As DEVICE_NOTIFY_SUBSCRIBE_PARAMETERS (powrprof.h).
struct PowerSubscription {
  ULONG(CALLBACK* Callback)(void* context, ULONG type, void* setting);
  void* Context;
};

class PowerQueue {
 public:
  // The one of this process; never destroyed.
  static PowerQueue& Get();

  // Events from now on reach the routine.
  void Register(const PowerSubscription& subscription);
  // A power broadcast; dropped when nobody has registered.
  void Send(uint32_t type);

 private:
  PowerQueue() = default;
  [[noreturn]] void Serve();

  // Both guarded by the clock's lock.
  std::optional<PowerSubscription> m_subscription;
  std::deque<uint32_t> m_types;
};

}  // namespace nuvelta::wine
