// <windows.h> and the small things that the driver's files share.
#pragma once

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <memory>
#include <string>

#include "notebook/model/unicode.h"

namespace nuvelta::wine {

struct HandleCloser {
  using pointer = HANDLE;
  void operator()(HANDLE handle) const { CloseHandle(handle); }
};
using Handle = std::unique_ptr<void, HandleCloser>;

struct ServiceHandleCloser {
  using pointer = SC_HANDLE;
  void operator()(SC_HANDLE handle) const { CloseServiceHandle(handle); }
};
using ServiceHandle = std::unique_ptr<SC_HANDLE__, ServiceHandleCloser>;

inline std::wstring Wide(const std::string& utf8) {
  const std::u16string text = virtual_notebook::Utf16(utf8);
  return {text.begin(), text.end()};
}

}  // namespace nuvelta::wine
