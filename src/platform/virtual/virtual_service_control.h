// The service control manager of the virtual notebook, for its one service.
#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/service_control.h"
#include "platform/virtual/context.h"

namespace nuvelta::virtual_notebook {

// One report of SetServiceStatus.
struct StatusReport {
  uint32_t process = 0;
  Nanoseconds at{};
  platform::ServiceStatus status;
};

class VirtualServiceControl final : public platform::ServiceControl {
 public:
  // `launch` runs an elevated command line.
  VirtualServiceControl(Context& context, const std::string& service_key,
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
  platform::ManagerHandle OpenSCManagerW(uint32_t access) override;
  bool EnumServicesStatusExW(platform::ManagerHandle manager, uint32_t level, uint32_t type,
                             uint32_t state, void* buffer, uint32_t size, uint32_t& needed,
                             uint32_t& returned) override;
  platform::ServiceRecord ReadService(const void* buffer, uint32_t index) override;
  bool CloseServiceHandle(platform::ManagerHandle manager) noexcept override;
  bool ShellExecuteExW(const platform::ShellExecuteInfo& info) override;

  // For the story. Each control waits in the dispatcher's queue; what has no
  // recipient is dropped. SendControl answers false when the service does not
  // accept the control now.
  void BeginProcess(uint32_t process);
  void EndProcess();
  bool SendControl(uint32_t control, uint32_t event_type);
  void SendDeviceEvent(uint32_t event_type, const std::string& interface_name);
  void SendPowerSetting(const platform::Guid& setting, uint32_t data);
  void SendPowerEvent(uint32_t type);

  // Whether the service has reported that it stops, or has stopped.
  bool Stopping() const;
  std::vector<StatusReport> Reports() const;

 private:
  struct Control;
  struct Dispatcher;
  struct PowerQueue;

  void Enqueue(Control control);
  void ServePowerEvents(const std::shared_ptr<PowerQueue>& queue);

  Context& m_context;
  const std::u16string m_service_key;
  const std::function<void(std::string)> m_launch;
  mutable std::mutex m_mutex;
  uint32_t m_process = 0;
  platform::ServiceStatus m_status;
  platform::HandlerFunction m_handler = nullptr;
  void* m_handler_context = nullptr;
  bool m_wants_power_settings = false;
  bool m_wants_devices = false;
  std::shared_ptr<Dispatcher> m_dispatcher;
  std::shared_ptr<PowerQueue> m_power_queue;
  std::vector<StatusReport> m_reports;
};

}  // namespace nuvelta::virtual_notebook
