// Handlers that the platform keeps and calls.
#pragma once

#include <atomic>
#include <functional>
#include <utility>

#include "platform/windows/winrt/abi.h"
#include "platform/windows/winrt/com_ptr.h"
#include "platform/windows/winrt/hresult.h"

namespace nuvelta::windows::winrt {

// A handler of one interface. Agile: the platform may call and release it on any
// thread. What the callback throws becomes the HRESULT of Invoke.
template <class Interface, class... Arguments>
class Delegate final : public Interface {
 public:
  using Callback = std::function<void(Arguments...)>;

  static ComPtr<Interface> Make(Callback callback) {
    return ComPtr<Interface>::Adopt(new Delegate(std::move(callback)));
  }

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override {
    if (object == nullptr) return E_POINTER;
    // IAgileObject has no methods of its own.
    const bool known = IsEqualGUID(id, abi::IdOf<IUnknown>()) ||
                       IsEqualGUID(id, abi::IdOf<IAgileObject>()) ||
                       IsEqualGUID(id, abi::IdOf<Interface>());
    *object = known ? static_cast<Interface*>(this) : nullptr;
    if (!known) return E_NOINTERFACE;
    AddRef();
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++m_references; }
  ULONG STDMETHODCALLTYPE Release() override {
    const ULONG left = --m_references;
    if (left == 0) delete this;
    return left;
  }
  HRESULT STDMETHODCALLTYPE Invoke(Arguments... arguments) override {
    try {
      m_callback(arguments...);
      return S_OK;
    } catch (...) {
      return CaughtHresult();
    }
  }

 private:
  explicit Delegate(Callback callback) : m_callback(std::move(callback)) {}
  ~Delegate() = default;

  std::atomic<ULONG> m_references = 1;
  const Callback m_callback;
};

}  // namespace nuvelta::windows::winrt
