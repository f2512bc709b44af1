#include "notebook/machine/virtual_service_control.h"

#include <utility>

#include "notebook/model/event_data.h"
#include "notebook/model/unicode.h"

namespace nuvelta::virtual_notebook {

using platform::NotifyHandle;
using platform::ServiceStatus;

struct VirtualServiceControl::Control {
  uint32_t control = 0;
  uint32_t event_type = 0;
  std::vector<uint8_t> data;
};

// What the dispatcher's thread waits for: a control, or the service's stop.
struct VirtualServiceControl::Dispatcher final : Waitable {
  std::deque<Control> controls;
  bool stopped = false;

  bool Ready(uint32_t /*id*/) const override { return stopped || !controls.empty(); }
  std::string Describe() const override { return "the next control"; }
};

struct VirtualServiceControl::PowerQueue final : Waitable {
  platform::PowerCallback callback = nullptr;
  void* context = nullptr;
  std::deque<uint32_t> types;

  bool Ready(uint32_t /*id*/) const override { return !types.empty(); }
  std::string Describe() const override { return "the next power event"; }
};

namespace {

std::vector<ListedService> ListedServices(const Notebook& notebook) {
  if (notebook.services) return *notebook.services;
  return {{"Dhcp", 912},
          {"EventLog", 1044},
          {"Spooler", 0},
          {notebook.service_key, 0},
          {"WwanSvc", 1388}};
}

}  // namespace

VirtualServiceControl::VirtualServiceControl(Context& context, const Notebook& notebook,
                                             std::function<void(std::string)> launch)
    : m_context(context),
      m_service_key(Utf16(notebook.service_key)),
      m_services(ListedServices(notebook)),
      m_settings_need_acceptance(notebook.power_settings_need_acceptance),
      m_begin(context.scheduler.Now()),
      m_launch(std::move(launch)) {}

VirtualServiceControl::~VirtualServiceControl() = default;

bool VirtualServiceControl::StartServiceCtrlDispatcherW(std::u16string_view /*name*/,
                                                        platform::ServiceMainFunction main) {
  if (m_context.Fails("StartServiceCtrlDispatcherW")) return false;
  std::shared_ptr<Dispatcher> dispatcher;
  {
    const std::lock_guard lock(m_mutex);
    dispatcher = m_dispatcher;
  }
  if (dispatcher == nullptr) {
    Context::SetLastError(platform::kErrorFailedServiceControllerConnect);
    return false;
  }
  m_context.scheduler.Spawn("service main", Scheduler::CurrentProcess(), main);
  for (;;) {
    m_context.scheduler.Wait(*dispatcher, std::nullopt);
    std::optional<Control> control;
    m_context.scheduler.Change([&] {
      if (dispatcher->controls.empty()) return;
      control = std::move(dispatcher->controls.front());
      dispatcher->controls.pop_front();
    });
    if (!control) {
      // The manager lets the service's own thread finish its last report.
      m_context.scheduler.Sleep(std::chrono::milliseconds(5));
      return true;
    }
    platform::HandlerFunction handler = nullptr;
    void* handler_context = nullptr;
    {
      const std::lock_guard lock(m_mutex);
      handler = m_handler;
      handler_context = m_handler_context;
    }
    if (handler == nullptr) continue;
    handler(control->control, control->event_type,
            control->data.empty() ? nullptr : control->data.data(), handler_context);
  }
}

platform::StatusHandle VirtualServiceControl::RegisterServiceCtrlHandlerExW(
    std::u16string_view /*name*/, platform::HandlerFunction handler, void* context) {
  if (m_context.Fails("RegisterServiceCtrlHandlerExW")) return {};
  const std::lock_guard lock(m_mutex);
  m_handler = handler;
  m_handler_context = context;
  return static_cast<platform::StatusHandle>(0x5C);
}

bool VirtualServiceControl::SetServiceStatus(platform::StatusHandle /*handle*/,
                                             const ServiceStatus& status) {
  if (m_context.Fails("SetServiceStatus")) return false;
  std::shared_ptr<Dispatcher> dispatcher;
  {
    const std::lock_guard lock(m_mutex);
    m_status = status;
    m_reports.push_back({m_process, status});
    dispatcher = m_dispatcher;
  }
  if (status.dwCurrentState == platform::kServiceStopped && dispatcher != nullptr) {
    m_context.scheduler.Change([&] { dispatcher->stopped = true; });
  }
  return true;
}

NotifyHandle VirtualServiceControl::RegisterPowerSettingNotification(
    platform::StatusHandle /*recipient*/, const platform::Guid& /*setting*/, uint32_t /*flags*/) {
  if (m_context.Fails("RegisterPowerSettingNotification")) return {};
  const std::lock_guard lock(m_mutex);
  m_wants_power_settings = true;
  return static_cast<NotifyHandle>(1);
}

NotifyHandle VirtualServiceControl::RegisterSuspendResumeNotification(
    platform::PowerCallback callback, void* context, uint32_t /*flags*/) {
  if (m_context.Fails("RegisterSuspendResumeNotification")) return {};
  auto queue = std::make_shared<PowerQueue>();
  queue->callback = callback;
  queue->context = context;
  {
    const std::lock_guard lock(m_mutex);
    m_power_queue = queue;
  }
  m_context.scheduler.Spawn("power notifications", Scheduler::CurrentProcess(),
                            [this, queue] { ServePowerEvents(queue); });
  return static_cast<NotifyHandle>(2);
}

void VirtualServiceControl::ServePowerEvents(const std::shared_ptr<PowerQueue>& queue) {
  for (;;) {
    m_context.scheduler.Wait(*queue, std::nullopt);
    uint32_t type = 0;
    m_context.scheduler.Change([&] {
      type = queue->types.front();
      queue->types.pop_front();
    });
    queue->callback(queue->context, type, nullptr);
  }
}

NotifyHandle VirtualServiceControl::RegisterDeviceNotificationW(
    platform::StatusHandle /*recipient*/, const platform::DeviceInterfaceBroadcast& filter,
    uint32_t /*flags*/) {
  if (m_context.Fails("RegisterDeviceNotificationW")) return {};
  const std::lock_guard lock(m_mutex);
  m_wants_devices = filter.dbcc_classguid == platform::kGuidDevInterfaceNet;
  return static_cast<NotifyHandle>(3);
}

void VirtualServiceControl::BeginProcess(uint32_t process) {
  const std::lock_guard lock(m_mutex);
  m_process = process;
  m_since = m_context.scheduler.Now();
  m_status = {.dwServiceType = platform::kServiceWin32OwnProcess,
              .dwCurrentState = platform::kServiceStartPending};
  m_dispatcher = std::make_shared<Dispatcher>();
}

void VirtualServiceControl::EndProcess() {
  const std::lock_guard lock(m_mutex);
  m_process = 0;
  m_status = {};
  m_stop_sent = false;
  m_handler = nullptr;
  m_handler_context = nullptr;
  m_wants_power_settings = false;
  m_wants_devices = false;
  m_dispatcher.reset();
  m_power_queue.reset();
}

void VirtualServiceControl::Enqueue(Control control) {
  std::shared_ptr<Dispatcher> dispatcher;
  {
    const std::lock_guard lock(m_mutex);
    if (m_handler == nullptr) return;
    dispatcher = m_dispatcher;
  }
  if (dispatcher == nullptr) return;
  m_context.scheduler.Change([&] { dispatcher->controls.push_back(std::move(control)); });
}

void VirtualServiceControl::Refuse(uint32_t control, uint32_t event_type, uint32_t error) {
  m_refused.push_back({.at = m_context.scheduler.Now() - m_begin,
                       .control = control,
                       .event_type = event_type,
                       .error = error});
}

void VirtualServiceControl::SendControl(const SentControl& sent) {
  {
    const std::lock_guard lock(m_mutex);
    if (const auto error = RefusalOf(sent, Managed()))
      return Refuse(sent.control, sent.event_type, *error);
    // The manager knows nothing of what comes regardless of it.
    if (sent.control == platform::kServiceControlStop && !sent.regardless) m_stop_sent = true;
  }
  Enqueue({.control = sent.control, .event_type = sent.event_type, .data = {}});
}

bool VirtualServiceControl::SendLastStop() {
  {
    const std::lock_guard lock(m_mutex);
    const bool stopping = m_stop_sent || m_status.dwCurrentState == platform::kServiceStopPending ||
                          m_status.dwCurrentState == platform::kServiceStopped;
    if (stopping) return true;
    if (RefusalOf(SentControl{.control = platform::kServiceControlStop}, Managed())) return false;
    m_stop_sent = true;
  }
  Enqueue({.control = platform::kServiceControlStop, .data = {}});
  return true;
}

void VirtualServiceControl::SendDeviceEvent(uint32_t event_type,
                                            const std::string& interface_name) {
  {
    const std::lock_guard lock(m_mutex);
    if (!m_wants_devices) return;
  }
  Enqueue({.control = platform::kServiceControlDeviceEvent,
           .event_type = event_type,
           .data = DeviceEventData(interface_name)});
}

void VirtualServiceControl::SendPowerSetting(const platform::Guid& setting, uint32_t data) {
  {
    const std::lock_guard lock(m_mutex);
    if (!m_wants_power_settings) return;
    const auto refusal = m_settings_need_acceptance
                             ? RefusalOf(platform::kServiceControlPowerEvent, Managed())
                             : std::nullopt;
    if (refusal) {
      return Refuse(platform::kServiceControlPowerEvent, kPowerSettingChange, *refusal);
    }
  }
  Enqueue({.control = platform::kServiceControlPowerEvent,
           .event_type = kPowerSettingChange,
           .data = PowerSettingData(setting, data)});
}

void VirtualServiceControl::SendPowerEvent(uint32_t type) {
  std::shared_ptr<PowerQueue> queue;
  {
    const std::lock_guard lock(m_mutex);
    queue = m_power_queue;
  }
  if (queue == nullptr) return;
  m_context.scheduler.Change([&] { queue->types.push_back(type); });
}

RunningService VirtualServiceControl::Running() const {
  const std::lock_guard lock(m_mutex);
  return {.process = m_process, .status = m_status, .since = m_since};
}

std::vector<StatusReport> VirtualServiceControl::Reports() const {
  const std::lock_guard lock(m_mutex);
  return m_reports;
}

std::vector<RefusedControl> VirtualServiceControl::Refused() const {
  const std::lock_guard lock(m_mutex);
  return m_refused;
}

}  // namespace nuvelta::virtual_notebook
