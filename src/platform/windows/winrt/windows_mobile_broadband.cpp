#include "platform/windows/winrt/windows_mobile_broadband.h"

#include <utility>

#include "platform/windows/winrt/activation.h"
#include "platform/windows/winrt/delegate.h"
#include "platform/windows/winrt/windows_command_channel.h"

namespace nuvelta::windows {

namespace {

using winrt::Check;
using winrt::ComPtr;

// One of each for the process; constant-initialised and never destroyed.
constinit winrt::Factory<abi::IMobileBroadbandModemStatics> g_modem_statics{abi::kModemClass};
constinit winrt::Factory<IActivationFactory> g_watchers{abi::kAccountWatcherClass};
constinit winrt::Factory<IActivationFactory> g_data_writers{abi::kDataWriterClass};

// A new object by the class's default constructor; null when the platform makes
// none.
template <class Interface>
ComPtr<Interface> Activate(winrt::Factory<IActivationFactory>& factory) {
  ComPtr<IInspectable> object;
  Check(factory.Get().ActivateInstance(object.Out()));
  ComPtr<Interface> instance;
  if (object) Check(object.As(instance));
  return instance;
}

class WindowsAccountWatcher final : public platform::AccountWatcher {
 public:
  explicit WindowsAccountWatcher(ComPtr<abi::IMobileBroadbandAccountWatcher> watcher)
      : m_watcher(std::move(watcher)) {}

  int64_t AccountAdded(Handler handler) override {
    abi::EventToken token;
    Check(m_watcher->add_AccountAdded(ForAccounts(std::move(handler)).Get(), &token));
    return token.value;
  }
  int64_t AccountRemoved(Handler handler) override {
    abi::EventToken token;
    Check(m_watcher->add_AccountRemoved(ForAccounts(std::move(handler)).Get(), &token));
    return token.value;
  }
  int64_t EnumerationCompleted(Handler handler) override {
    using Delegate =
        winrt::Delegate<abi::IWatcherHandler, abi::IMobileBroadbandAccountWatcher*, IInspectable*>;
    const auto delegate =
        Delegate::Make([handler = std::move(handler)](abi::IMobileBroadbandAccountWatcher*,
                                                      IInspectable*) { handler(); });
    abi::EventToken token;
    Check(m_watcher->add_EnumerationCompleted(delegate.Get(), &token));
    return token.value;
  }
  platform::WatcherStatus Status() override {
    abi::WatcherStatus status{};
    Check(m_watcher->get_Status(&status));
    return status;
  }
  void Start() override { Check(m_watcher->Start()); }

 private:
  static ComPtr<abi::IAccountHandler> ForAccounts(Handler handler) {
    using Delegate = winrt::Delegate<abi::IAccountHandler, abi::IMobileBroadbandAccountWatcher*,
                                     abi::IMobileBroadbandAccountEventArgs*>;
    return Delegate::Make(
        [handler = std::move(handler)](abi::IMobileBroadbandAccountWatcher*,
                                       abi::IMobileBroadbandAccountEventArgs*) { handler(); });
  }

  ComPtr<abi::IMobileBroadbandAccountWatcher> m_watcher;
};

}  // namespace

std::shared_ptr<platform::Modem> WindowsMobileBroadband::GetDefault() {
  ComPtr<abi::IMobileBroadbandModem> modem;
  Check(g_modem_statics.Get().GetDefault(modem.Out()));
  return ProjectModem(std::move(modem));
}

std::shared_ptr<platform::DataWriter> WindowsMobileBroadband::CreateDataWriter() {
  return ProjectDataWriter(Activate<abi::IDataWriter>(g_data_writers));
}

std::shared_ptr<platform::AccountWatcher> WindowsMobileBroadband::CreateAccountWatcher() {
  auto watcher = Activate<abi::IMobileBroadbandAccountWatcher>(g_watchers);
  return watcher ? std::make_shared<WindowsAccountWatcher>(std::move(watcher)) : nullptr;
}

}  // namespace nuvelta::windows
