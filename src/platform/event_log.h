// The event log, as raw EVENTLOGRECORD bytes. Facts: winnt.h, winbase.h pages.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "platform/types.h"

namespace nuvelta::platform {

inline constexpr uint32_t kEventLogSequentialRead = 1;  // EVENTLOG_SEQUENTIAL_READ
inline constexpr uint32_t kEventLogBackwardsRead = 8;   // EVENTLOG_BACKWARDS_READ

class EventLog {
 public:
  virtual ~EventLog() = default;

  // Opens a log of the local machine; null on failure.
  virtual EventLogHandle OpenEventLogW(std::u16string_view log) = 0;
  // Reads as many whole records as fit. False at the end (kErrorHandleEof) or
  // when not even one fits (kErrorInsufficientBuffer, `needed` set).
  virtual bool ReadEventLogW(EventLogHandle log, uint32_t flags, uint32_t offset,
                             std::span<std::byte> buffer, uint32_t& read, uint32_t& needed) = 0;
  virtual bool CloseEventLog(EventLogHandle log) noexcept = 0;
};

}  // namespace nuvelta::platform
