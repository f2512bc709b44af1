// The service control manager of the virtual notebook, for its one service.
#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "notebook/machine/context.h"
#include "notebook/model/control_rules.h"
#include "notebook/model/story_report.h"
#include "platform/service_control.h"

namespace nuvelta::virtual_notebook {

// The service as the manager knows it.
struct RunningService {
  uint32_t process = 0;  // 0: it does not run
  platform::ServiceStatus status{};
  Nanoseconds since{};  // when the process began
};

class VirtualServiceControl final : public platform::ServiceControl {
 public:
  // `launch` runs an elevated command line.
  VirtualServiceControl(Context& context, const Notebook& notebook,
                        std::function<void(std::string)> launch);
  ~VirtualServiceControl() override;

  bool StartServiceCtrlDispatcherW(std::u16string_view name,
                                   platform::ServiceMainFunction main) override;
  platform::StatusHandle RegisterServiceCtrlHandlerExW(std::u16string_view name,
                                                       platform::HandlerFunction handler,
                                                       void* context) override;
  bool SetServiceStatus(platform::StatusHandle handle,
                        const platform::ServiceStatus& status) override;
  platform::NotifyHandle RegisterPowerSettingNotification(platform::StatusHandle recipient,
                                                          const platform::Guid& setting,
                                                          uint32_t flags) override;
  platform::NotifyHandle RegisterSuspendResumeNotification(platform::PowerCallback callback,
                                                           void* context, uint32_t flags) override;
  platform::NotifyHandle RegisterDeviceNotificationW(
      platform::StatusHandle recipient, const platform::DeviceInterfaceBroadcast& filter,
      uint32_t flags) override;

  // For a restart; in virtual_service_list.cpp.
  platform::ManagerHandle OpenSCManagerW(uint32_t access) override;
  bool EnumServicesStatusExW(platform::ManagerHandle manager, uint32_t level, uint32_t type,
                             uint32_t state, void* buffer, uint32_t size, uint32_t& needed,
                             uint32_t& returned) override;
  platform::ServiceRecord ReadService(const void* buffer, uint32_t index) override;
  bool CloseServiceHandle(platform::ManagerHandle manager) noexcept override;
  bool ShellExecuteExW(const platform::ShellExecuteInfo& info) override;

  // For the story. Each control waits in the dispatcher's queue. One that the rules
  // of the manager refuse does not, and is recorded; notifications that nobody has
  // registered for are dropped.
  void BeginProcess(uint32_t process);
  void EndProcess();
  void SendControl(const SentControl& sent);
  // Sends the stop control that ends the story; false, with nothing recorded, when
  // the service neither accepts it nor stops already.
  bool SendLastStop();
  void SendDeviceEvent(uint32_t event_type, const std::string& interface_name);
  void SendPowerSetting(const platform::Guid& setting, uint32_t data);
  void SendPowerEvent(uint32_t type);

  RunningService Running() const;
  std::vector<StatusReport> Reports() const;
  std::vector<RefusedControl> Refused() const;

 private:
  struct Control;
  struct Dispatcher;
  struct PowerQueue;

  void Enqueue(Control control);
  // Both with the mutex held.
  void Refuse(uint32_t control, uint32_t event_type, uint32_t error);
  ManagedService Managed() const {
    return {.status = m_status, .stop_sent = m_stop_sent, .has_handler = m_handler != nullptr};
  }
  void ServePowerEvents(const std::shared_ptr<PowerQueue>& queue);

  Context& m_context;
  const std::u16string m_service_key;
  const std::vector<ListedService> m_services;
  const bool m_settings_need_acceptance;
  const Nanoseconds m_begin;  // of the story
  const std::function<void(std::string)> m_launch;
  mutable std::mutex m_mutex;
  uint32_t m_process = 0;
  platform::ServiceStatus m_status;
  Nanoseconds m_since{};
  bool m_stop_sent = false;
  platform::HandlerFunction m_handler = nullptr;
  void* m_handler_context = nullptr;
  bool m_wants_power_settings = false;
  bool m_wants_devices = false;
  std::shared_ptr<Dispatcher> m_dispatcher;
  std::shared_ptr<PowerQueue> m_power_queue;
  std::vector<StatusReport> m_reports;
  std::vector<RefusedControl> m_refused;
};

}  // namespace nuvelta::virtual_notebook
