#include "platform/windows/winrt/hresult.h"

#include <new>

#include "platform/mobile_broadband.h"

namespace nuvelta::windows::winrt {

void Check(HRESULT result) {
  if (SUCCEEDED(result)) return;
  if (result == E_OUTOFMEMORY) throw std::bad_alloc();
  throw platform::HresultError{static_cast<uint32_t>(result)};
}

HRESULT CaughtHresult() noexcept {
  try {
    throw;
  } catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
  } catch (const platform::HresultError& error) {
    return static_cast<HRESULT>(error.code);
  } catch (...) {
    return E_FAIL;
  }
}

}  // namespace nuvelta::windows::winrt
