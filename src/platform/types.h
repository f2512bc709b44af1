// Value types shared by the ports. Layouts that carry "as in" mirror the named
// Win32 structure byte for byte on x86-64, so a port may hand them through.
#pragma once

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>

namespace nuvelta::platform {

// MAX_PATH: characters of a path, with its terminator.
inline constexpr size_t kMaxPath = 260;

// As in GUID (guiddef.h).
struct Guid {
  uint32_t Data1 = 0;
  uint16_t Data2 = 0;
  uint16_t Data3 = 0;
  std::array<uint8_t, 8> Data4{};

  friend bool operator==(const Guid&, const Guid&) = default;
};
static_assert(sizeof(Guid) == 16);

// As in FILETIME, joined: 100-nanosecond units since 1601-01-01 UTC.
using FileTime = uint64_t;

// As in SYSTEMTIME (minwinbase.h).
struct SystemTime {
  uint16_t wYear = 0;
  uint16_t wMonth = 0;
  uint16_t wDayOfWeek = 0;
  uint16_t wDay = 0;
  uint16_t wHour = 0;
  uint16_t wMinute = 0;
  uint16_t wSecond = 0;
  uint16_t wMilliseconds = 0;
};

// Opaque handles, one type a facility. Zero is the null handle.
enum class KeyHandle : uintptr_t {};
enum class EventHandle : uintptr_t {};
enum class ThreadHandle : uintptr_t {};
enum class CriticalSectionHandle : uintptr_t {};
enum class EventLogHandle : uintptr_t {};
enum class FindHandle : uintptr_t {};
enum class DeviceSetHandle : uintptr_t {};
enum class StatusHandle : uintptr_t {};
enum class NotifyHandle : uintptr_t {};
enum class ManagerHandle : uintptr_t {};

// INVALID_HANDLE_VALUE for the facilities that answer it instead of null.
template <class Handle>
constexpr Handle InvalidHandle() {
  return static_cast<Handle>(UINTPTR_MAX);
}

// Win32 status codes that the logic tests or the ports answer (winerror.h).
inline constexpr uint32_t kErrorSuccess = 0;
inline constexpr uint32_t kErrorFileNotFound = 2;
inline constexpr uint32_t kErrorPathNotFound = 3;
inline constexpr uint32_t kErrorAccessDenied = 5;
inline constexpr uint32_t kErrorInvalidHandle = 6;
inline constexpr uint32_t kErrorNotEnoughMemory = 8;
inline constexpr uint32_t kErrorInvalidData = 13;
inline constexpr uint32_t kErrorNoMoreFiles = 18;
inline constexpr uint32_t kErrorHandleEof = 38;
inline constexpr uint32_t kErrorBufferOverflow = 111;
inline constexpr uint32_t kErrorInsufficientBuffer = 122;
inline constexpr uint32_t kErrorMoreData = 234;
inline constexpr uint32_t kErrorNoMoreItems = 259;
inline constexpr uint32_t kErrorServiceNotActive = 1062;
inline constexpr uint32_t kErrorFailedServiceControllerConnect = 1063;
inline constexpr uint32_t kErrorCancelled = 1223;

}  // namespace nuvelta::platform
