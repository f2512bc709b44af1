// Activation factories of runtime classes.
#pragma once

#include <atomic>

#include "platform/windows/winrt/abi.h"
#include "platform/windows/winrt/com_ptr.h"
#include "platform/windows/winrt/hresult.h"

namespace nuvelta::windows::winrt {

// The factory of a class as one of its interfaces. `name` is NUL-terminated. Throws
// what Check throws; null when the platform answers none.
ComPtr<IUnknown> LookUpFactory(const wchar_t* name, const GUID& id);

// The factory of one class, looked up when it is first asked for and then kept for
// the life of the process: threads may use it until the end. A failed look-up is
// not kept. Safe on any thread, for all threads here share one apartment.
template <class Interface>
class Factory {
 public:
  explicit constexpr Factory(const wchar_t* name) : m_name(name) {}
  Factory(const Factory&) = delete;
  Factory& operator=(const Factory&) = delete;

  // Throws what Check throws.
  Interface& Get() {
    if (Interface* known = m_factory.load(std::memory_order_acquire)) return *known;
    ComPtr<IUnknown> object = LookUpFactory(m_name, abi::IdOf<Interface>());
    if (!object) Check(E_POINTER);
    // Looked up under this interface: the pointer is its pointer.
    auto* const found = static_cast<Interface*>(object.Get());
    Interface* known = nullptr;
    if (!m_factory.compare_exchange_strong(known, found, std::memory_order_acq_rel)) return *known;
    object.Detach();
    return *found;
  }

 private:
  const wchar_t* const m_name;
  std::atomic<Interface*> m_factory = nullptr;
};

}  // namespace nuvelta::windows::winrt
