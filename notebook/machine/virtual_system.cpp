#include "notebook/machine/virtual_system.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <ctime>

#include "notebook/machine/code_page.h"
#include "notebook/model/file_time.h"
#include "notebook/model/unicode.h"

namespace nuvelta::virtual_notebook {

namespace {

constexpr uint32_t kVersionBlockSize = 64;

int64_t WholeSeconds(Nanoseconds time) {
  return std::chrono::floor<std::chrono::seconds>(time).count();
}

}  // namespace

std::chrono::system_clock::time_point VirtualClock::Now() noexcept {
  return std::chrono::system_clock::time_point(
      std::chrono::duration_cast<std::chrono::system_clock::duration>(m_context.scheduler.Now()));
}

int64_t VirtualClock::time() noexcept { return WholeSeconds(m_context.scheduler.Now()); }

std::tm VirtualClock::localtime(int64_t seconds) noexcept {
  const time_t value = seconds;
  std::tm local{};
  localtime_r(&value, &local);
  return local;
}

int64_t VirtualClock::clock() noexcept {
  return std::chrono::floor<std::chrono::milliseconds>(m_context.scheduler.Now()).count();
}

std::string VirtualEnvironment::GetVariable(std::string_view name) {
  // What the notebook itself asks is not a call of the service's.
  if (Scheduler::CurrentProcess() != 0 && m_context.Fails("GetVariable")) return {};
  for (const auto& [variable, value] : m_variables) {
    if (Folded(variable) == Folded(name)) return ToCodePage(Utf16(value));
  }
  return {};
}

void VirtualEnvironment::WriteStandardOutput(std::string_view text) {
  const std::lock_guard lock(m_mutex);
  m_standard_output += text;
}

// The scheduler reports what leaves a thread; there is nothing to install.
void VirtualEnvironment::InstallCrashDumpWriter() {}

std::string VirtualEnvironment::StandardOutput() const {
  const std::lock_guard lock(m_mutex);
  return m_standard_output;
}

uint32_t VirtualFirmware::GetSystemFirmwareTable(uint32_t provider, uint32_t /*table*/,
                                                 std::byte* buffer, uint32_t size) {
  if (m_context.Fails("GetSystemFirmwareTable")) return 0;
  if (provider != platform::kFirmwareProviderRsmb) return 0;
  if (buffer != nullptr && size >= m_table.size() && !m_table.empty()) {
    std::memcpy(buffer, m_table.data(), m_table.size());
  }
  return static_cast<uint32_t>(m_table.size());
}

VirtualSessions::VirtualSessions(Context& context, const std::vector<Session>& sessions)
    : m_context(context) {
  for (const Session& session : sessions) m_names.push_back(Utf16(session.name));
  for (size_t i = 0; i < sessions.size(); ++i) {
    m_sessions.push_back({.SessionId = sessions[i].id,
                          .pWinStationName = m_names[i].c_str(),
                          .State = sessions[i].state});
  }
}

bool VirtualSessions::WTSEnumerateSessionsW(const platform::SessionInfo*& list, uint32_t& count) {
  if (m_context.Fails("WTSEnumerateSessionsW")) return false;
  list = m_sessions.data();
  count = static_cast<uint32_t>(m_sessions.size());
  return true;
}

VirtualSystemInformation::VirtualSystemInformation(Context& context, const Notebook& notebook,
                                                   Nanoseconds boot)
    : m_context(context),
      m_path(Utf16(notebook.program_path)),
      m_version(notebook.program_version),
      m_boot(boot) {}

bool VirtualSystemInformation::LookUpNtQuerySystemInformation() {
  return !m_context.Fails("LookUpNtQuerySystemInformation");
}

uint32_t VirtualSystemInformation::NtQuerySystemInformation(uint32_t /*information_class*/,
                                                            std::span<std::byte> buffer) {
  if (const auto status = m_context.Error("NtQuerySystemInformation")) return *status;
  const auto boot = static_cast<int64_t>(FileTicks(m_boot));
  if (buffer.size() < sizeof boot) return 0xC0000004;  // STATUS_INFO_LENGTH_MISMATCH
  std::memcpy(buffer.data(), &boot, sizeof boot);
  return 0;
}

bool VirtualSystemInformation::FileTimeToLocalFileTime(platform::FileTime utc,
                                                       platform::FileTime& local) {
  if (m_context.Fails("FileTimeToLocalFileTime")) return false;
  // The bias of now, as the platform takes it, not of the moment converted.
  const time_t now = WholeSeconds(m_context.scheduler.Now());
  std::tm broken_down{};
  localtime_r(&now, &broken_down);
  local = utc + static_cast<platform::FileTime>(broken_down.tm_gmtoff * kTicksPerSecond);
  return true;
}

bool VirtualSystemInformation::FileTimeToSystemTime(platform::FileTime time,
                                                    platform::SystemTime& broken_down) {
  if (m_context.Fails("FileTimeToSystemTime")) return false;
  const time_t seconds =
      static_cast<int64_t>(time) / kTicksPerSecond - kTicksBefore1970 / kTicksPerSecond;
  std::tm utc{};
  gmtime_r(&seconds, &utc);
  broken_down = {.wYear = static_cast<uint16_t>(utc.tm_year + 1900),
                 .wMonth = static_cast<uint16_t>(utc.tm_mon + 1),
                 .wDayOfWeek = static_cast<uint16_t>(utc.tm_wday),
                 .wDay = static_cast<uint16_t>(utc.tm_mday),
                 .wHour = static_cast<uint16_t>(utc.tm_hour),
                 .wMinute = static_cast<uint16_t>(utc.tm_min),
                 .wSecond = static_cast<uint16_t>(utc.tm_sec),
                 .wMilliseconds =
                     static_cast<uint16_t>(time % static_cast<uint64_t>(kTicksPerSecond) / 10000)};
  return true;
}

uint32_t VirtualSystemInformation::GetModuleFileNameW(std::span<char16_t> path) {
  if (m_context.Fails("GetModuleFileNameW") || path.empty()) return 0;
  const size_t length = std::min(m_path.size(), path.size() - 1);
  std::copy_n(m_path.begin(), length, path.begin());
  path[length] = u'\0';
  return static_cast<uint32_t>(length);
}

uint32_t VirtualSystemInformation::GetFileVersionInfoSizeW(const char16_t* /*path*/) {
  if (m_context.Fails("GetFileVersionInfoSizeW")) return 0;
  return m_version.empty() ? 0 : kVersionBlockSize;
}

bool VirtualSystemInformation::GetFileVersionInfoW(const char16_t* /*path*/,
                                                   std::span<std::byte> block) {
  if (m_context.Fails("GetFileVersionInfoW") || m_version.empty()) return false;
  unsigned parts[4] = {};
  std::sscanf(m_version.c_str(), "%u.%u.%u.%u", &parts[0], &parts[1], &parts[2], &parts[3]);
  const platform::FixedFileInfo info{.dwFileVersionMS = (parts[0] << 16U) | (parts[1] & 0xFFFFU),
                                     .dwFileVersionLS = (parts[2] << 16U) | (parts[3] & 0xFFFFU)};
  if (block.size() < sizeof info) return false;
  std::memcpy(block.data(), &info, sizeof info);
  return true;
}

bool VirtualSystemInformation::VerQueryValueW(std::span<const std::byte> block,
                                              platform::FixedFileInfo& info) {
  if (m_context.Fails("VerQueryValueW") || block.size() < sizeof info) return false;
  std::memcpy(&info, block.data(), sizeof info);
  return true;
}

}  // namespace nuvelta::virtual_notebook
