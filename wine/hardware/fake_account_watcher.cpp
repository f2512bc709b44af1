#include "wine/hardware/fake_account_watcher.h"

#include <map>
#include <memory>
#include <mutex>
#include <utility>

#include "notebook/model/story_times.h"

namespace nuvelta::wine {

namespace {

using abi::EventToken;
using abi::WatcherStatus;

class FakeAccountArgs final : public Fake<abi::IMobileBroadbandAccountEventArgs> {
 public:
  HRESULT STDMETHODCALLTYPE get_NetworkAccountId(HSTRING*) override { return E_NOTIMPL; }
};

class FakeWatcher;

// The way from the stage, which listeners never leave, to a watcher that may be
// gone.
struct Anchor {
  std::mutex mutex;
  FakeWatcher* watcher = nullptr;

  ComPtr<FakeWatcher> Reach();
};

class FakeWatcher final : public Fake<abi::IMobileBroadbandAccountWatcher> {
 public:
  FakeWatcher() { m_anchor->watcher = this; }
  ~FakeWatcher() override {
    const std::lock_guard lock(m_anchor->mutex);
    m_anchor->watcher = nullptr;
  }

  HRESULT STDMETHODCALLTYPE add_AccountAdded(abi::IAccountHandler* handler,
                                             EventToken* token) override {
    return Answer("AccountWatcher::AccountAdded", [&] { return Add(m_added, handler, token); });
  }
  HRESULT STDMETHODCALLTYPE remove_AccountAdded(EventToken token) override {
    return Remove(m_added, token);
  }
  HRESULT STDMETHODCALLTYPE add_AccountRemoved(abi::IAccountHandler* handler,
                                               EventToken* token) override {
    return Answer("AccountWatcher::AccountRemoved", [&] { return Add(m_removed, handler, token); });
  }
  HRESULT STDMETHODCALLTYPE remove_AccountRemoved(EventToken token) override {
    return Remove(m_removed, token);
  }
  HRESULT STDMETHODCALLTYPE add_EnumerationCompleted(abi::IWatcherHandler* handler,
                                                     EventToken* token) override {
    return Answer("AccountWatcher::EnumerationCompleted",
                  [&] { return Add(m_enumerated, handler, token); });
  }
  HRESULT STDMETHODCALLTYPE remove_EnumerationCompleted(EventToken token) override {
    return Remove(m_enumerated, token);
  }
  HRESULT STDMETHODCALLTYPE get_Status(WatcherStatus* value) override {
    return Answer("AccountWatcher::Status", [&] {
      const std::lock_guard lock(m_mutex);
      *value = m_status;
      return S_OK;
    });
  }
  HRESULT STDMETHODCALLTYPE Start() override {
    return Answer("AccountWatcher::Start", [&] { return Begin(); });
  }

  HRESULT STDMETHODCALLTYPE add_AccountUpdated(abi::IAccountUpdatedHandler*, EventToken*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE remove_AccountUpdated(EventToken) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE add_Stopped(abi::IWatcherHandler*, EventToken*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE remove_Stopped(EventToken) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Stop() override { return E_NOTIMPL; }

 private:
  // By token, which is by order of registration.
  template <class Handler>
  using Handlers = std::map<INT64, ComPtr<Handler>>;

  template <class Handler>
  HRESULT Add(Handlers<Handler>& handlers, Handler* handler, EventToken* token) {
    const std::lock_guard lock(m_mutex);
    token->value = m_next_token++;
    handlers.emplace(token->value, handler);
    return S_OK;
  }
  template <class Handler>
  HRESULT Remove(Handlers<Handler>& handlers, EventToken token) {
    ComPtr<Handler> gone;  // to be released outside the lock
    const std::lock_guard lock(m_mutex);
    if (const auto found = handlers.find(token.value); found != handlers.end()) {
      gone = std::move(found->second);
      handlers.erase(found);
    }
    return S_OK;
  }

  HRESULT Begin() {
    const uint32_t accounts = Stage().Accounts();
    bool listens = false;
    {
      const std::lock_guard lock(m_mutex);
      m_status = WatcherStatus::kStarted;
      listens = std::exchange(m_listens, true);
    }
    if (!listens) {
      Stage().ListenToAccounts([anchor = m_anchor](bool added) {
        if (const ComPtr<FakeWatcher> watcher = anchor->Reach()) watcher->Raise(added);
      });
    }
    Stage().RunLater(virtual_notebook::kAccountEnumeration,
                     [self = ComPtr<FakeWatcher>(this), accounts] { self->Enumerate(accounts); });
    return S_OK;
  }

  void Enumerate(uint32_t accounts) {
    for (uint32_t i = 0; i < accounts; ++i) Raise(true);
    Handlers<abi::IWatcherHandler> handlers;
    {
      const std::lock_guard lock(m_mutex);
      m_status = WatcherStatus::kEnumerationCompleted;
      handlers = m_enumerated;
    }
    // Of this event the platform says no more than that it is an object.
    Call<abi::IWatcherHandler, IInspectable>(handlers, Make<FakeAccountArgs>().Get());
  }

  void Raise(bool added) {
    Handlers<abi::IAccountHandler> handlers;
    {
      const std::lock_guard lock(m_mutex);
      handlers = added ? m_added : m_removed;
    }
    Call(handlers, Make<FakeAccountArgs>().Get());
  }

  // The platform takes an error of a handler and goes on.
  template <class Handler, class Args>
  void Call(const Handlers<Handler>& handlers, Args* args) {
    for (const auto& [token, handler] : handlers) handler->Invoke(this, args);
  }

  const std::shared_ptr<Anchor> m_anchor = std::make_shared<Anchor>();
  std::mutex m_mutex;
  WatcherStatus m_status = WatcherStatus::kCreated;
  bool m_listens = false;
  INT64 m_next_token = 1;
  Handlers<abi::IAccountHandler> m_added;
  Handlers<abi::IAccountHandler> m_removed;
  Handlers<abi::IWatcherHandler> m_enumerated;
};

ComPtr<FakeWatcher> Anchor::Reach() {
  const std::lock_guard lock(mutex);
  const bool alive = watcher != nullptr && watcher->AddRefWhileAlive();
  return ComPtr<FakeWatcher>::Adopt(alive ? watcher : nullptr);
}

}  // namespace

ComPtr<abi::IMobileBroadbandAccountWatcher> MakeFakeAccountWatcher() {
  return ComPtr<abi::IMobileBroadbandAccountWatcher>::Adopt(new FakeWatcher);
}

}  // namespace nuvelta::wine
