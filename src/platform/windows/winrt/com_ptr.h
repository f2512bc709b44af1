// A reference to a COM object. Small and own, because WRL's ComPtr as mingw-w64
// carries it counts otherwise than Microsoft's (Attach adds a reference).
#pragma once

#include <unknwn.h>

#include <utility>

#include "platform/windows/winrt/abi.h"

namespace nuvelta::windows::winrt {

template <class Interface>
class ComPtr {
 public:
  ComPtr() = default;
  // Shares an object that others hold.
  explicit ComPtr(Interface* object) : m_object(object) {
    if (m_object != nullptr) m_object->AddRef();
  }
  ComPtr(const ComPtr& other) : ComPtr(other.m_object) {}
  ComPtr(ComPtr&& other) noexcept : m_object(std::exchange(other.m_object, nullptr)) {}
  ComPtr& operator=(ComPtr other) noexcept {
    std::swap(m_object, other.m_object);
    return *this;
  }
  ~ComPtr() {
    if (m_object != nullptr) m_object->Release();
  }

  // Takes over a reference, that of a new object above all.
  static ComPtr Adopt(Interface* object) {
    ComPtr pointer;
    pointer.m_object = object;
    return pointer;
  }
  // Gives the reference away.
  Interface* Detach() { return std::exchange(m_object, nullptr); }

  // For an out parameter, which receives a reference; the pointer must be null.
  Interface** Out() { return &m_object; }

  Interface* Get() const { return m_object; }
  Interface* operator->() const { return m_object; }
  explicit operator bool() const { return m_object != nullptr; }

  // The same object under another interface; a failing HRESULT when it has none.
  template <class Other>
  HRESULT As(ComPtr<Other>& other) const {
    const GUID id = abi::IdOf<Other>();
    ComPtr<Other> found;
    const HRESULT result = m_object->QueryInterface(id, reinterpret_cast<void**>(found.Out()));
    other = std::move(found);
    return result;
  }

 private:
  Interface* m_object = nullptr;
};

}  // namespace nuvelta::windows::winrt
