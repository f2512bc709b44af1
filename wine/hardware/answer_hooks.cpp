// What Wine has no hardware, or no history, to answer: the firmware table, the
// Application event log, the sessions.
#include <windows.h>

#include <wtsapi32.h>

#include <cstring>
#include <map>
#include <mutex>
#include <span>
#include <string>
#include <vector>

#include "notebook/model/event_data.h"
#include "notebook/model/smbios_builder.h"
#include "notebook/model/unicode.h"
#include "wine/hardware/hooks.h"
#include "wine/hardware/import_table.h"
#include "wine/hardware/played_story.h"

namespace nuvelta::wine {

namespace {

UINT WINAPI FirmwareTable(DWORD /*provider*/, DWORD /*table*/, void* buffer, DWORD size) {
  PlayedStory& story = *PlayedStory::Current();
  if (story.Fails("GetSystemFirmwareTable")) return 0;
  const virtual_notebook::Notebook& notebook = story.Notebook();
  if (!notebook.has_firmware_table) {
    SetLastError(ERROR_INVALID_FUNCTION);
    return 0;
  }
  const std::vector<uint8_t> table = virtual_notebook::FirmwareTableOf(notebook);
  if (size < table.size()) {
    SetLastError(ERROR_INSUFFICIENT_BUFFER);
  } else if (!table.empty()) {
    std::memcpy(buffer, table.data(), table.size());
  }
  return static_cast<UINT>(table.size());
}

// The log as it was when it was opened, newest record last; how many are unread.
struct Snapshot {
  std::vector<std::vector<uint8_t>> records;
  size_t unread = 0;
};

class OpenLogs {
 public:
  HANDLE Open(const std::vector<WrittenRecord>& written) {
    Snapshot log;
    for (const WrittenRecord& record : written) {
      log.records.push_back(virtual_notebook::EventRecordBytes(
          record.record, static_cast<uint32_t>(log.records.size() + 1),
          static_cast<uint32_t>(record.written)));
    }
    log.unread = log.records.size();
    const std::lock_guard lock(m_mutex);
    m_logs.emplace(m_next, std::move(log));
    return reinterpret_cast<HANDLE>(m_next++);
  }

  bool Close(HANDLE handle) {
    const std::lock_guard lock(m_mutex);
    return m_logs.erase(reinterpret_cast<uintptr_t>(handle)) != 0;
  }

  virtual_notebook::RecordsRead Read(HANDLE handle, std::span<std::byte> buffer) {
    const std::lock_guard lock(m_mutex);
    const auto found = m_logs.find(reinterpret_cast<uintptr_t>(handle));
    if (found == m_logs.end()) return {.error = ERROR_INVALID_HANDLE};
    return virtual_notebook::ReadBackwards(found->second.records, found->second.unread, buffer);
  }

 private:
  std::mutex m_mutex;
  std::map<uintptr_t, Snapshot> m_logs;
  uintptr_t m_next = 0x4000;
};

OpenLogs& Logs() {
  static auto* const logs = new OpenLogs;
  return *logs;
}

HANDLE WINAPI OpenLog(LPCWSTR /*server*/, LPCWSTR /*log*/) {
  PlayedStory& story = *PlayedStory::Current();
  if (story.Fails("OpenEventLogW")) return nullptr;
  return Logs().Open(story.Records());
}

BOOL WINAPI ReadLog(HANDLE log, DWORD /*flags*/, DWORD /*offset*/, void* buffer, DWORD size,
                    DWORD* read, DWORD* needed) {
  *read = 0;
  *needed = 0;
  if (PlayedStory::Current()->Fails("ReadEventLogW")) return FALSE;
  const auto answer = Logs().Read(log, {static_cast<std::byte*>(buffer), size});
  *read = answer.read;
  *needed = answer.needed;
  if (answer.error != ERROR_SUCCESS) SetLastError(answer.error);
  return answer.error == ERROR_SUCCESS ? TRUE : FALSE;
}

BOOL WINAPI CloseLog(HANDLE log) { return Logs().Close(log) ? TRUE : FALSE; }

// The service keeps the list for good, so it is never freed.
BOOL WINAPI Sessions(HANDLE /*server*/, DWORD /*reserved*/, DWORD /*version*/,
                     WTS_SESSION_INFOW** list, DWORD* count) {
  PlayedStory& story = *PlayedStory::Current();
  if (story.Fails("WTSEnumerateSessionsW")) return FALSE;
  const auto& sessions = story.Notebook().sessions;
  *list = new WTS_SESSION_INFOW[sessions.size() + 1]{};
  *count = static_cast<DWORD>(sessions.size());
  for (size_t i = 0; i < sessions.size(); ++i) {
    const auto* name = new std::u16string(virtual_notebook::Utf16(sessions[i].name));
    (*list)[i] = {.SessionId = sessions[i].id,
                  .pWinStationName = reinterpret_cast<LPWSTR>(const_cast<char16_t*>(name->c_str())),
                  .State = static_cast<WTS_CONNECTSTATE_CLASS>(sessions[i].state)};
  }
  return TRUE;
}

}  // namespace

void InstallAnswerHooks() {
  Replace("kernel32.dll", "GetSystemFirmwareTable", FirmwareTable);
  Replace("advapi32.dll", "OpenEventLogW", OpenLog);
  Replace("advapi32.dll", "ReadEventLogW", ReadLog);
  Replace("advapi32.dll", "CloseEventLog", CloseLog);
  Replace("wtsapi32.dll", "WTSEnumerateSessionsW", Sessions);
}

}  // namespace nuvelta::wine
