#include "platform/windows/winrt/activation.h"

#include <combaseapi.h>
#include <roapi.h>
#include <winstring.h>

#include <cwchar>

namespace nuvelta::windows::winrt {

namespace {

// A class name as an HSTRING, without a copy.
class StringReference {
 public:
  explicit StringReference(const wchar_t* text) {
    Check(WindowsCreateStringReference(text, static_cast<UINT32>(std::wcslen(text)), &m_header,
                                       &m_string));
  }
  StringReference(const StringReference&) = delete;
  StringReference& operator=(const StringReference&) = delete;

  HSTRING Get() const { return m_string; }

 private:
  HSTRING_HEADER m_header{};
  HSTRING m_string = nullptr;
};

// A multithreaded apartment, for good. No thread of the service joins an apartment
// itself, so it belongs to this one as soon as it exists; and with it stay the
// factories and the watcher, which are kept for just as long. A failure is tried
// again the next time.
void NeedApartment() {
  static const CO_MTA_USAGE_COOKIE cookie = [] {
    CO_MTA_USAGE_COOKIE made{};
    Check(CoIncrementMTAUsage(&made));
    return made;
  }();
  static_cast<void>(cookie);
}

}  // namespace

ComPtr<IUnknown> LookUpFactory(const wchar_t* name, const GUID& id) {
  NeedApartment();
  const StringReference class_name(name);
  ComPtr<IUnknown> factory;
  Check(RoGetActivationFactory(class_name.Get(), id, reinterpret_cast<void**>(factory.Out())));
  return factory;
}

}  // namespace nuvelta::windows::winrt
