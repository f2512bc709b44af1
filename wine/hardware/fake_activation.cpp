#include "wine/hardware/fake_activation.h"

#include <winstring.h>

#include <string_view>

#include "wine/hardware/fake_account_watcher.h"
#include "wine/hardware/fake_command_channel.h"
#include "wine/hardware/fake_data_writer.h"
#include "wine/hardware/fake_object.h"

namespace nuvelta::wine {

namespace {

class FakeModemFactory final : public Fake<IActivationFactory, abi::IMobileBroadbandModemStatics> {
 public:
  HRESULT STDMETHODCALLTYPE GetDefault(abi::IMobileBroadbandModem** value) override {
    *value = nullptr;
    return Answer("MobileBroadband::GetDefault", [&] {
      if (IsOffered(Stage().Modem())) *value = MakeFakeModem().Detach();
      return S_OK;
    });
  }

  // The class has no constructor.
  HRESULT STDMETHODCALLTYPE ActivateInstance(IInspectable**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetDeviceSelector(HSTRING*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE FromId(HSTRING, abi::IMobileBroadbandModem**) override {
    return E_NOTIMPL;
  }
};

class FakeDataWriterFactory final : public Fake<IActivationFactory> {
 public:
  HRESULT STDMETHODCALLTYPE ActivateInstance(IInspectable** instance) override {
    *instance = nullptr;
    return Answer("MobileBroadband::CreateDataWriter", [&] {
      *instance = MakeFakeDataWriter().Detach();
      return S_OK;
    });
  }
};

class FakeAccountWatcherFactory final : public Fake<IActivationFactory> {
 public:
  HRESULT STDMETHODCALLTYPE ActivateInstance(IInspectable** instance) override {
    *instance = nullptr;
    return Answer("MobileBroadband::CreateAccountWatcher", [&] {
      *instance = MakeFakeAccountWatcher().Detach();
      return S_OK;
    });
  }
};

}  // namespace

HRESULT ActivationFactoryFor(HSTRING name, IActivationFactory** factory) noexcept {
  if (factory == nullptr) return E_POINTER;
  *factory = nullptr;
  UINT32 length = 0;
  const wchar_t* const text = WindowsGetStringRawBuffer(name, &length);
  const std::wstring_view wanted(text, length);
  try {
    if (wanted == abi::kModemClass) {
      *factory = Make<FakeModemFactory>().Detach();
    } else if (wanted == abi::kDataWriterClass) {
      *factory = Make<FakeDataWriterFactory>().Detach();
    } else if (wanted == abi::kAccountWatcherClass) {
      *factory = Make<FakeAccountWatcherFactory>().Detach();
    } else {
      return REGDB_E_CLASSNOTREG;
    }
    return S_OK;
  } catch (...) {
    return E_OUTOFMEMORY;
  }
}

}  // namespace nuvelta::wine

extern "C" __declspec(dllexport) HRESULT WINAPI
    DllGetActivationFactory(HSTRING name, IActivationFactory** factory);

HRESULT WINAPI DllGetActivationFactory(HSTRING name, IActivationFactory** factory) {
  return nuvelta::wine::ActivationFactoryFor(name, factory);
}
