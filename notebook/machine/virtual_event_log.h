// The Application event log of the virtual notebook, as raw records.
#pragma once

#include <map>
#include <mutex>
#include <vector>

#include "notebook/machine/context.h"
#include "notebook/model/scenario.h"
#include "platform/event_log.h"

namespace nuvelta::virtual_notebook {

class VirtualEventLog final : public platform::EventLog {
 public:
  explicit VirtualEventLog(Context& context) : m_context(context) {}

  platform::EventLogHandle OpenEventLogW(std::u16string_view log) override;
  bool ReadEventLogW(platform::EventLogHandle log, uint32_t flags, uint32_t offset,
                     std::span<std::byte> buffer, uint32_t& read, uint32_t& needed) override;
  bool CloseEventLog(platform::EventLogHandle log) noexcept override;

  // Appends a record that was written at `seconds` (since 1970).
  void Write(const EventRecord& record, int64_t seconds);
  void EndProcess();
  size_t OpenHandles() const;

 private:
  Context& m_context;
  mutable std::mutex m_mutex;
  std::vector<std::vector<uint8_t>> m_records;  // in order of writing
  std::map<uintptr_t, size_t> m_cursors;        // records not yet read
  uintptr_t m_next_handle = 0x3000;
};

}  // namespace nuvelta::virtual_notebook
