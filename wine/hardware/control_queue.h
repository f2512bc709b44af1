// The controls that wait for the service: from the real service control manager
// and from the story. The process's main thread serves them one after the other,
// as it would inside StartServiceCtrlDispatcherW.
#pragma once

#include <windows.h>

#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "notebook/model/control_rules.h"
#include "platform/types.h"

namespace nuvelta::wine {

class ControlQueue {
 public:
  // The one of this process; never destroyed.
  static ControlQueue& Get();

  // What the service has registered and reported.
  void SetHandler(LPHANDLER_FUNCTION_EX handler, void* context);
  void WantDevices();
  void WantPowerSettings();
  void SetStatus(const SERVICE_STATUS& status);

  // From the story. Notifications that nobody has registered for are dropped. What
  // the rules of the manager refuse is, too; then the error is answered, as RefusalOf
  // has it.
  std::optional<uint32_t> SendControl(const virtual_notebook::SentControl& sent);
  void SendDeviceEvent(uint32_t event_type, const std::string& interface_name);
  // `needs_acceptance`: the registration alone is not enough.
  std::optional<uint32_t> SendPowerSetting(const platform::Guid& setting, uint32_t data,
                                           bool needs_acceptance);
  // The story's stop goes through the real manager: here it is only asked about.
  std::optional<uint32_t> BeginStop();

  // From the real manager: waits until the handler has answered.
  DWORD Deliver(DWORD control, DWORD event_type, void* data);

  // Serves controls on the calling thread until Finish, and until the service's own
  // thread, if there is one, has come to its end; then answers the result.
  BOOL Serve();
  // The real dispatcher has returned.
  void Finish(BOOL result, DWORD error);
  // The service's own thread has begun or ended.
  void SetServiceRuns(bool runs);

 private:
  struct Answer;
  struct Control {
    uint32_t control = 0;
    uint32_t event_type = 0;
    std::vector<uint8_t> own_data{};
    void* data = nullptr;  // instead of own_data
    std::shared_ptr<Answer> answer{};
  };

  ControlQueue() = default;
  void Enqueue(Control control);
  void Handle(Control& control);

  // All guarded by the clock's lock.
  std::deque<Control> m_controls;
  LPHANDLER_FUNCTION_EX m_handler = nullptr;
  void* m_context = nullptr;
  bool m_wants_devices = false;
  bool m_wants_power_settings = false;
  virtual_notebook::ManagedService m_service{
      .status = {.dwCurrentState = platform::kServiceStartPending}};
  bool m_service_runs = false;
  bool m_finished = false;
  BOOL m_result = FALSE;
  DWORD m_error = 0;
};

}  // namespace nuvelta::wine
