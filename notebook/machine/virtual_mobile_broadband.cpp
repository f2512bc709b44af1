#include "notebook/machine/virtual_mobile_broadband.h"

#include <utility>

#include "notebook/machine/virtual_command_channel.h"
#include "notebook/model/story_times.h"

namespace nuvelta::virtual_notebook {

using platform::WatcherStatus;

// Its handlers run on threads of the platform, one event a thread.
class VirtualMobileBroadband::Watcher final
    : public platform::AccountWatcher,
      public std::enable_shared_from_this<VirtualMobileBroadband::Watcher> {
 public:
  Watcher(Context& context, VirtualMobileBroadband& owner) : m_context(context), m_owner(owner) {}

  int64_t AccountAdded(Handler handler) override {
    m_context.Answers("AccountWatcher::AccountAdded");
    return Register(m_added, std::move(handler));
  }
  int64_t AccountRemoved(Handler handler) override {
    m_context.Answers("AccountWatcher::AccountRemoved");
    return Register(m_removed, std::move(handler));
  }
  int64_t EnumerationCompleted(Handler handler) override {
    m_context.Answers("AccountWatcher::EnumerationCompleted");
    return Register(m_enumerated, std::move(handler));
  }
  WatcherStatus Status() override {
    m_context.Answers("AccountWatcher::Status");
    const std::lock_guard lock(m_mutex);
    return m_status;
  }
  void Start() override {
    m_context.Answers("AccountWatcher::Start");
    uint32_t accounts = 0;
    {
      const std::lock_guard lock(m_owner.m_mutex);
      accounts = m_owner.m_accounts;
    }
    {
      const std::lock_guard lock(m_mutex);
      m_status = WatcherStatus::kStarted;
      m_process = Scheduler::CurrentProcess();
    }
    m_context.scheduler.Spawn("account events", Scheduler::CurrentProcess(),
                              [self = shared_from_this(), accounts] { self->Enumerate(accounts); });
  }

  void Raise(bool added) {
    uint32_t process = 0;
    Handler handler;
    {
      const std::lock_guard lock(m_mutex);
      if (m_status != WatcherStatus::kStarted && m_status != WatcherStatus::kEnumerationCompleted) {
        return;
      }
      process = m_process;
      handler = added ? m_added : m_removed;
    }
    m_context.scheduler.Spawn("account event", process, [handler] { Call(handler); });
  }

 private:
  int64_t Register(Handler& slot, Handler handler) {
    const std::lock_guard lock(m_mutex);
    slot = std::move(handler);
    return m_next_token++;
  }

  void Enumerate(uint32_t accounts) {
    m_context.scheduler.Sleep(kAccountEnumeration);
    for (uint32_t i = 0; i < accounts; ++i) Call(Locked(m_added));
    {
      const std::lock_guard lock(m_mutex);
      m_status = WatcherStatus::kEnumerationCompleted;
    }
    Call(Locked(m_enumerated));
  }

  Handler Locked(const Handler& slot) {
    const std::lock_guard lock(m_mutex);
    return slot;
  }

  // The platform takes an error of a handler and goes on.
  static void Call(const Handler& handler) {
    try {
      if (handler) handler();
    } catch (const ThreadKilled&) {
      throw;
    } catch (...) {
    }
  }

  Context& m_context;
  VirtualMobileBroadband& m_owner;
  std::mutex m_mutex;
  WatcherStatus m_status = WatcherStatus::kCreated;
  uint32_t m_process = 0;
  int64_t m_next_token = 1;
  Handler m_added;
  Handler m_removed;
  Handler m_enumerated;
};

VirtualMobileBroadband::VirtualMobileBroadband(Context& context, ModemModel& modem,
                                               uint32_t accounts)
    : m_context(context), m_modem(modem), m_accounts(accounts) {}

VirtualMobileBroadband::~VirtualMobileBroadband() = default;

std::shared_ptr<platform::Modem> VirtualMobileBroadband::GetDefault() {
  if (!m_context.Answers("MobileBroadband::GetDefault")) return nullptr;
  return IsOffered(m_modem.Description()) ? MakeModem(m_context, m_modem) : nullptr;
}

std::shared_ptr<platform::DataWriter> VirtualMobileBroadband::CreateDataWriter() {
  return m_context.Answers("MobileBroadband::CreateDataWriter") ? MakeDataWriter(m_context)
                                                                : nullptr;
}

std::shared_ptr<platform::AccountWatcher> VirtualMobileBroadband::CreateAccountWatcher() {
  if (!m_context.Answers("MobileBroadband::CreateAccountWatcher")) return nullptr;
  auto watcher = std::make_shared<Watcher>(m_context, *this);
  const std::lock_guard lock(m_mutex);
  m_watchers.push_back(watcher);
  return watcher;
}

void VirtualMobileBroadband::ChangeAccounts(bool added) {
  std::vector<std::shared_ptr<Watcher>> watchers;
  {
    const std::lock_guard lock(m_mutex);
    if (!added && m_accounts == 0) return;
    m_accounts = added ? m_accounts + 1 : m_accounts - 1;
    watchers = m_watchers;
  }
  for (const auto& watcher : watchers) watcher->Raise(added);
}

void VirtualMobileBroadband::EndProcess() {
  const std::lock_guard lock(m_mutex);
  m_watchers.clear();
}

}  // namespace nuvelta::virtual_notebook
