#include "wine/hardware/control_queue.h"

#include <condition_variable>
#include <mutex>
#include <optional>
#include <utility>

#include "notebook/model/event_data.h"
#include "platform/service_control.h"
#include "wine/hardware/story_clock.h"

namespace nuvelta::wine {

using virtual_notebook::RefusalOf;
using virtual_notebook::SentControl;

// What the handler has answered to a control of the real manager.
struct ControlQueue::Answer {
  void Give(DWORD answer) {
    const std::lock_guard lock(m_mutex);
    m_value = answer;
    m_given.notify_one();
  }
  DWORD Await() {
    std::unique_lock lock(m_mutex);
    m_given.wait(lock, [&] { return m_value.has_value(); });
    return *m_value;
  }

 private:
  std::mutex m_mutex;
  std::condition_variable m_given;
  std::optional<DWORD> m_value;
};

ControlQueue& ControlQueue::Get() {
  static auto* const queue = new ControlQueue;
  return *queue;
}

void ControlQueue::SetHandler(LPHANDLER_FUNCTION_EX handler, void* context) {
  StoryClock::Get().Change([&] {
    m_handler = handler;
    m_context = context;
    m_service.has_handler = true;
  });
}

void ControlQueue::WantDevices() {
  StoryClock::Get().Change([&] { m_wants_devices = true; });
}

void ControlQueue::WantPowerSettings() {
  StoryClock::Get().Change([&] { m_wants_power_settings = true; });
}

void ControlQueue::SetStatus(const SERVICE_STATUS& status) {
  static_assert(sizeof status == sizeof(platform::ServiceStatus));
  StoryClock::Get().Change(
      [&] { m_service.status = reinterpret_cast<const platform::ServiceStatus&>(status); });
}

void ControlQueue::Enqueue(Control control) {
  StoryClock::Get().Change([&] {
    if (m_handler != nullptr) m_controls.push_back(std::move(control));
  });
}

std::optional<uint32_t> ControlQueue::SendControl(const SentControl& sent) {
  std::optional<uint32_t> error;
  StoryClock::Get().Change([&] {
    error = RefusalOf(sent, m_service);
    if (error) return;
    m_controls.push_back({.control = sent.control, .event_type = sent.event_type});
  });
  return error;
}

std::optional<uint32_t> ControlQueue::BeginStop() {
  std::optional<uint32_t> error;
  StoryClock::Get().Change([&] {
    error = RefusalOf(SERVICE_CONTROL_STOP, m_service);
    if (!error) m_service.stop_sent = true;
  });
  return error;
}

void ControlQueue::SendDeviceEvent(uint32_t event_type, const std::string& interface_name) {
  bool wanted = false;
  StoryClock::Get().Change([&] { wanted = m_wants_devices; });
  if (!wanted) return;
  Enqueue({.control = SERVICE_CONTROL_DEVICEEVENT,
           .event_type = event_type,
           .own_data = virtual_notebook::DeviceEventData(interface_name)});
}

std::optional<uint32_t> ControlQueue::SendPowerSetting(const platform::Guid& setting, uint32_t data,
                                                       bool needs_acceptance) {
  bool wanted = false;
  std::optional<uint32_t> error;
  StoryClock::Get().Change([&] {
    wanted = m_wants_power_settings;
    if (wanted && needs_acceptance) error = RefusalOf(SERVICE_CONTROL_POWEREVENT, m_service);
  });
  if (!wanted || error) return error;
  Enqueue({.control = SERVICE_CONTROL_POWEREVENT,
           .event_type = virtual_notebook::kPowerSettingChange,
           .own_data = virtual_notebook::PowerSettingData(setting, data)});
  return {};
}

DWORD ControlQueue::Deliver(DWORD control, DWORD event_type, void* data) {
  const auto answer = std::make_shared<Answer>();
  Enqueue({.control = control, .event_type = event_type, .data = data, .answer = answer});
  // The story has asked for it, and time had stood still until it came.
  if (control == SERVICE_CONTROL_STOP) StoryClock::Get().Thaw();
  return answer->Await();
}

void ControlQueue::Handle(Control& control) {
  void* data = control.data;
  if (!control.own_data.empty()) data = control.own_data.data();
  const DWORD answer = m_handler(control.control, control.event_type, data, m_context);
  if (control.answer) control.answer->Give(answer);
}

BOOL ControlQueue::Serve() {
  for (;;) {
    std::optional<Control> control;
    StoryClock::Get().Await(
        [&] {
          if (!m_controls.empty()) {
            control = std::move(m_controls.front());
            m_controls.pop_front();
          }
          return control || (m_finished && !m_service_runs);
        },
        std::nullopt);
    if (!control) break;
    Handle(*control);
  }
  SetLastError(m_error);
  return m_result;
}

void ControlQueue::Finish(BOOL result, DWORD error) {
  StoryClock::Get().Change([&] {
    m_finished = true;
    m_result = result;
    m_error = error;
  });
}

void ControlQueue::SetServiceRuns(bool runs) {
  StoryClock::Get().Change([&] { m_service_runs = runs; });
}

}  // namespace nuvelta::wine
