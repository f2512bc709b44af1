// What the objects of the fake runtime classes have in common. They do what the
// service asks of them and what a story can tell of it; every other method answers
// E_NOTIMPL.
#pragma once

#include <atomic>
#include <new>
#include <utility>

#include "platform/windows/winrt/abi.h"
#include "platform/windows/winrt/com_ptr.h"
#include "wine/hardware/modem_stage.h"

namespace nuvelta::wine {

namespace abi = windows::abi;
using virtual_notebook::Duration;
using windows::winrt::ComPtr;

// HRESULTs that mingw-w64's headers lack.
inline constexpr auto kBounds = static_cast<HRESULT>(0x8000000B);  // E_BOUNDS
inline constexpr auto kIllegalMethodCall =
    static_cast<HRESULT>(0x8000000E);                              // E_ILLEGAL_METHOD_CALL
inline constexpr auto kClosed = static_cast<HRESULT>(0x80000013);  // RO_E_CLOSED
inline constexpr auto kIllegalDelegateAssignment =
    static_cast<HRESULT>(0x80000018);  // E_ILLEGAL_DELEGATE_ASSIGNMENT

// Fakes that are alive, factories included.
inline std::atomic<int> g_live_fakes = 0;

// The platform's own interfaces have a destructor that others can reach.
#ifdef __GNUC__
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"
#endif

// An object with these interfaces, agile, with one reference for its maker. The
// first derives from IInspectable.
template <class First, class... Others>
class Fake : public First, public Others... {
 public:
  Fake(const Fake&) = delete;
  Fake& operator=(const Fake&) = delete;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    if (IsEqualGUID(id, abi::IdOf<IUnknown>()) || IsEqualGUID(id, abi::IdOf<IInspectable>()) ||
        IsEqualGUID(id, abi::IdOf<IAgileObject>())) {
      *object = static_cast<First*>(this);
    }
    OfferAs<First>(id, object);
    (OfferAs<Others>(id, object), ...);
    if (*object == nullptr) return E_NOINTERFACE;
    AddRef();
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++m_references; }
  ULONG STDMETHODCALLTYPE Release() override {
    const ULONG left = --m_references;
    if (left == 0) delete this;
    return left;
  }
  // A reference to an object that nobody may hold any more; false when so.
  bool AddRefWhileAlive() {
    ULONG seen = m_references;
    while (seen != 0 && !m_references.compare_exchange_weak(seen, seen + 1)) {
    }
    return seen != 0;
  }

  HRESULT STDMETHODCALLTYPE GetIids(ULONG* /*count*/, IID** /*ids*/) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetRuntimeClassName(HSTRING* /*name*/) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetTrustLevel(TrustLevel* /*level*/) override { return E_NOTIMPL; }

 protected:
  Fake() { ++g_live_fakes; }
  virtual ~Fake() { --g_live_fakes; }

 private:
  template <class Interface>
  void OfferAs(REFIID id, void** object) {
    if (IsEqualGUID(id, abi::IdOf<Interface>())) *object = static_cast<Interface*>(this);
  }

  std::atomic<ULONG> m_references = 1;
};

#ifdef __GNUC__
#pragma GCC diagnostic pop
#endif

template <class Object, class... Arguments>
ComPtr<Object> Make(Arguments&&... arguments) {
  return ComPtr<Object>::Adopt(new Object(std::forward<Arguments>(arguments)...));
}

// Does `work`, which answers an HRESULT, unless the story wants this call to fail;
// a fault that wants a null object leaves the out parameters as they are. No exception
// leaves it.
template <class Work>
HRESULT Answer(virtual_notebook::KnownCall call, const Work& work) noexcept {
  using Kind = virtual_notebook::Fault::Kind;
  try {
    const auto fault = Stage().Count(call);
    if (!fault) return work();
    if (fault->kind == Kind::kBadAlloc) return E_OUTOFMEMORY;
    return fault->kind == Kind::kHresult ? static_cast<HRESULT>(fault->code) : S_OK;
  } catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
  } catch (...) {
    return E_FAIL;
  }
}

}  // namespace nuvelta::wine
