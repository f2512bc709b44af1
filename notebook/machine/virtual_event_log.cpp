#include "notebook/machine/virtual_event_log.h"

#include "notebook/model/event_data.h"

namespace nuvelta::virtual_notebook {

void VirtualEventLog::Write(const EventRecord& record, int64_t seconds) {
  const std::lock_guard lock(m_mutex);
  const auto number = static_cast<uint32_t>(m_records.size() + 1);
  m_records.push_back(EventRecordBytes(record, number, static_cast<uint32_t>(seconds)));
}

platform::EventLogHandle VirtualEventLog::OpenEventLogW(std::u16string_view /*log*/) {
  if (m_context.Fails("OpenEventLogW")) return {};
  const std::lock_guard lock(m_mutex);
  m_cursors.emplace(m_next_handle, m_records.size());
  return static_cast<platform::EventLogHandle>(m_next_handle++);
}

bool VirtualEventLog::ReadEventLogW(platform::EventLogHandle log, uint32_t /*flags*/,
                                    uint32_t /*offset*/, std::span<std::byte> buffer,
                                    uint32_t& read, uint32_t& needed) {
  read = 0;
  needed = 0;
  if (m_context.Fails("ReadEventLogW")) return false;
  const std::lock_guard lock(m_mutex);
  const auto cursor = m_cursors.find(static_cast<uintptr_t>(log));
  if (cursor == m_cursors.end()) {
    Context::SetLastError(platform::kErrorInvalidHandle);
    return false;
  }
  const RecordsRead answer = ReadBackwards(m_records, cursor->second, buffer);
  read = answer.read;
  needed = answer.needed;
  if (answer.error != platform::kErrorSuccess) Context::SetLastError(answer.error);
  return answer.error == platform::kErrorSuccess;
}

bool VirtualEventLog::CloseEventLog(platform::EventLogHandle log) noexcept {
  const std::lock_guard lock(m_mutex);
  return m_cursors.erase(static_cast<uintptr_t>(log)) != 0;
}

void VirtualEventLog::EndProcess() {
  const std::lock_guard lock(m_mutex);
  m_cursors.clear();
}

size_t VirtualEventLog::OpenHandles() const {
  const std::lock_guard lock(m_mutex);
  return m_cursors.size();
}

}  // namespace nuvelta::virtual_notebook
