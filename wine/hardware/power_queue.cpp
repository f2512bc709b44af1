#include "wine/hardware/power_queue.h"

#include "wine/hardware/story_clock.h"

namespace nuvelta::wine {

PowerQueue& PowerQueue::Get() {
  static auto* const queue = new PowerQueue;
  return *queue;
}

void PowerQueue::Register(const PowerSubscription& subscription) {
  StoryClock::Get().Change([&] { m_subscription = subscription; });
  StoryClock::Get().Spawn([this] { Serve(); });
}

void PowerQueue::Send(uint32_t type) {
  StoryClock::Get().Change([&] {
    if (m_subscription) m_types.push_back(type);
  });
}

void PowerQueue::Serve() {
  for (;;) {
    uint32_t type = 0;
    StoryClock::Get().Await(
        [&] {
          if (m_types.empty()) return false;
          type = m_types.front();
          m_types.pop_front();
          return true;
        },
        std::nullopt);
    m_subscription->Callback(m_subscription->Context, type, nullptr);
  }
}

}  // namespace nuvelta::wine
