#include "platform/event_log.h"
#include "platform/windows/win32.h"
#include "platform/windows/windows_platform.h"

namespace nuvelta::windows {

namespace {

class Win32EventLog final : public platform::EventLog {
 public:
  platform::EventLogHandle OpenEventLogW(std::u16string_view log) override {
    return FromNative<platform::EventLogHandle>(::OpenEventLogW(nullptr, Terminated(log).c_str()));
  }

  bool ReadEventLogW(platform::EventLogHandle log, uint32_t flags, uint32_t offset,
                     std::span<std::byte> buffer, uint32_t& read, uint32_t& needed) override {
    DWORD bytes_read = 0;
    DWORD bytes_needed = 0;
    const BOOL success =
        ::ReadEventLogW(ToNative<HANDLE>(log), flags, offset, buffer.data(),
                        static_cast<DWORD>(buffer.size()), &bytes_read, &bytes_needed);
    read = bytes_read;
    needed = bytes_needed;
    return success != FALSE;
  }

  bool CloseEventLog(platform::EventLogHandle log) noexcept override {
    return ::CloseEventLog(ToNative<HANDLE>(log)) != FALSE;
  }
};

}  // namespace

platform::EventLog& WindowsEventLog() { return Immortal<Win32EventLog>(); }

}  // namespace nuvelta::windows
