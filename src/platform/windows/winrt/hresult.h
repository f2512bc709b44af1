// Between HRESULTs and exceptions.
#pragma once

#include "platform/windows/win32.h"

namespace nuvelta::windows::winrt {

// Throws std::bad_alloc for E_OUTOFMEMORY and platform::HresultError for any other
// failure.
void Check(HRESULT result);

// The way back, for code that the platform calls. Only inside a catch block.
HRESULT CaughtHresult() noexcept;

}  // namespace nuvelta::windows::winrt
