// Boot time and the program's version resource. Facts: winternl.h, timezoneapi.h
// and winver.h reference pages.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "platform/types.h"

namespace nuvelta::platform {

inline constexpr uint32_t kSystemTimeOfDayInformation = 3;

// The used members of VS_FIXEDFILEINFO.
struct FixedFileInfo {
  uint32_t dwFileVersionMS = 0;
  uint32_t dwFileVersionLS = 0;
};

class SystemInformation {
 public:
  virtual ~SystemInformation() = default;

  // LoadLibraryW("ntdll.dll") and GetProcAddress("NtQuerySystemInformation"),
  // kept for the call below; false when not found.
  virtual bool LookUpNtQuerySystemInformation() = 0;
  // Fills at most `buffer`, which has to be aligned as 64-bit numbers are. Returns an
  // NTSTATUS, 0 on success.
  virtual uint32_t NtQuerySystemInformation(uint32_t information_class,
                                            std::span<std::byte> buffer) = 0;
  virtual bool FileTimeToLocalFileTime(FileTime utc, FileTime& local) = 0;
  virtual bool FileTimeToSystemTime(FileTime time, SystemTime& broken_down) = 0;

  // The program's path, NUL-terminated, cut to the buffer; returns its length.
  virtual uint32_t GetModuleFileNameW(std::span<char16_t> path) = 0;
  // The version block's size in bytes; 0 when there is none.
  virtual uint32_t GetFileVersionInfoSizeW(const char16_t* path) = 0;
  virtual bool GetFileVersionInfoW(const char16_t* path, std::span<std::byte> block) = 0;
  // The root block "\\"; false when the block has no fixed file information.
  virtual bool VerQueryValueW(std::span<const std::byte> block, FixedFileInfo& info) = 0;
};

}  // namespace nuvelta::platform
