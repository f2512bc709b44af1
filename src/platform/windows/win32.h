// <windows.h> without its surplus, and the small conversions that every port on
// Win32 needs. Included by the files of this folder only.
#pragma once

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <bit>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/types.h"

namespace nuvelta::windows {

static_assert(sizeof(wchar_t) == sizeof(char16_t));
static_assert(sizeof(GUID) == sizeof(platform::Guid));

// A port's object that is never destroyed; see windows_platform.h.
template <class Port>
Port& Immortal() {
  static auto* const port = new Port;
  return *port;
}

// NUL-terminated, as Win32 wants its texts.
inline std::wstring Terminated(std::u16string_view text) { return {text.begin(), text.end()}; }

inline const wchar_t* WideChars(const char16_t* text) {
  return reinterpret_cast<const wchar_t*>(text);
}
inline wchar_t* WideChars(char16_t* text) { return reinterpret_cast<wchar_t*>(text); }
inline const char16_t* Utf16Chars(const wchar_t* text) {
  return reinterpret_cast<const char16_t*>(text);
}

inline GUID ToGuid(const platform::Guid& id) { return std::bit_cast<GUID>(id); }

// Between a port's opaque handle and the handle of Win32.
template <class Native, class Handle>
Native ToNative(Handle handle) {
  return reinterpret_cast<Native>(static_cast<uintptr_t>(handle));
}
template <class Handle, class Native>
Handle FromNative(Native handle) {
  return static_cast<Handle>(reinterpret_cast<uintptr_t>(handle));
}

// FILETIME and its joined form.
inline platform::FileTime Join(const FILETIME& time) {
  return (static_cast<uint64_t>(time.dwHighDateTime) << 32U) | time.dwLowDateTime;
}
inline FILETIME Split(platform::FileTime time) {
  return {.dwLowDateTime = static_cast<DWORD>(time),
          .dwHighDateTime = static_cast<DWORD>(time >> 32U)};
}

}  // namespace nuvelta::windows
