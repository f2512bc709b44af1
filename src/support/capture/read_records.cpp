// The records of the Application log that the service reads: the newest ones, up to the
// logon that it looks for.
#include <algorithm>
#include <cstring>
#include <string_view>

#include "common/scope_exit.h"
#include "platform/event_log.h"
#include "platform/platform.h"
#include "platform/threads.h"
#include "support/capture/event_record.h"
#include "support/capture/read_notebook.h"
#include "support/wide_text.h"

namespace nuvelta::support {

namespace {

constexpr size_t kServiceBuffer = 0x8000;  // as the service's
constexpr size_t kMostBytes = size_t{1} << 20U;

// The records of a filled buffer, newest first. Bytes that are no record stay together.
std::vector<Bytes> Split(std::span<const uint8_t> buffer) {
  std::vector<Bytes> records;
  while (!buffer.empty()) {
    const size_t length = RecordLength(buffer).value_or(buffer.size());
    records.emplace_back(buffer.begin(), buffer.begin() + static_cast<std::ptrdiff_t>(length));
    buffer = buffer.subspan(length);
  }
  return records;
}

}  // namespace

void ReadRecords(CapturedNotebook& notebook) {
  platform::EventLog& log = *platform::Os().event_log;
  const platform::EventLogHandle handle = log.OpenEventLogW(u"Application");
  if (handle == platform::EventLogHandle{}) {
    NoteError(notebook, "the Application event log", platform::Os().threads->GetLastError());
    return;
  }
  const ScopeExit close([&] { log.CloseEventLog(handle); });
  std::vector<std::byte> buffer(kServiceBuffer);
  size_t bytes = 0;
  uint32_t read = 0;
  uint32_t needed = 0;
  while (log.ReadEventLogW(handle,
                           platform::kEventLogSequentialRead | platform::kEventLogBackwardsRead, 0,
                           buffer, read, needed) &&
         read != 0) {
    const size_t size = std::min<size_t>(read, buffer.size());
    if (bytes + size > kMostBytes) {
      notebook.not_seen.emplace_back("records of the Application event log behind the newest " +
                                     std::to_string(bytes) + " bytes, which hold no logon");
      break;
    }
    bytes += size;
    const auto* const begin = reinterpret_cast<const uint8_t*>(buffer.data());
    const std::vector<Bytes> records = Split({begin, size});
    notebook.records.insert(notebook.records.end(), records.begin(), records.end());
    if (std::ranges::any_of(records, IsLogon)) break;
  }
  std::ranges::reverse(notebook.records);
}

}  // namespace nuvelta::support
