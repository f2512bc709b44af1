#include "modem/async_wait.h"

#include <atomic>
#include <memory>

#include "platform/platform.h"
#include "platform/threads.h"

namespace nuvelta {

namespace {

constexpr uint32_t kWin32Facility = 0x80070000;

// Shared by the waiter and the handler, which may run long after the waiter has
// given up: the last of the two closes the event.
class Completion {
 public:
  Completion() : m_event(platform::Os().threads->CreateEventW(true, false)) {
    if (m_event != platform::EventHandle{}) return;
    const uint32_t error = platform::Os().threads->GetLastError();
    throw platform::HresultError{kWin32Facility | (error & 0xFFFFU)};
  }
  ~Completion() { platform::Os().threads->CloseHandle(m_event); }
  Completion(const Completion&) = delete;
  Completion& operator=(const Completion&) = delete;

  void Finish(platform::AsyncStatus status) {
    m_status = status;
    platform::Os().threads->SetEvent(m_event);
  }

  platform::AsyncStatus Wait(uint32_t milliseconds) {
    platform::Os().threads->WaitForSingleObject(m_event, milliseconds);
    return m_status;
  }

 private:
  platform::EventHandle m_event;
  std::atomic<platform::AsyncStatus> m_status = platform::AsyncStatus::kStarted;
};

}  // namespace

platform::AsyncStatus WaitForCompletion(platform::CommandOperation& operation,
                                        uint32_t milliseconds) {
  const auto completion = std::make_shared<Completion>();
  operation.Completed([completion](platform::AsyncStatus status) { completion->Finish(status); });
  return completion->Wait(milliseconds);
}

}  // namespace nuvelta
