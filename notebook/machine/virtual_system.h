// The small ports of the virtual notebook: clock, environment, firmware table,
// sessions, version and boot-time information.
#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "notebook/machine/context.h"
#include "notebook/model/scenario.h"
#include "platform/clock.h"
#include "platform/environment.h"
#include "platform/firmware.h"
#include "platform/sessions.h"
#include "platform/system_info.h"

namespace nuvelta::virtual_notebook {

class VirtualClock final : public platform::Clock {
 public:
  explicit VirtualClock(Context& context) : m_context(context) {}
  std::chrono::system_clock::time_point Now() noexcept override;
  int64_t time() noexcept override;
  std::tm localtime(int64_t seconds) noexcept override;
  int64_t clock() noexcept override;

 private:
  Context& m_context;
};

class VirtualEnvironment final : public platform::Environment {
 public:
  VirtualEnvironment(Context& context, std::map<std::string, std::string> variables)
      : m_context(context), m_variables(std::move(variables)) {}
  std::string GetVariable(std::string_view name) override;
  void WriteStandardOutput(std::string_view text) override;
  void InstallCrashDumpWriter() override;

  std::string StandardOutput() const;

 private:
  Context& m_context;
  const std::map<std::string, std::string> m_variables;
  mutable std::mutex m_mutex;
  std::string m_standard_output;
};

class VirtualFirmware final : public platform::Firmware {
 public:
  // An empty table: the firmware has none.
  VirtualFirmware(Context& context, std::vector<uint8_t> table)
      : m_context(context), m_table(std::move(table)) {}
  uint32_t GetSystemFirmwareTable(uint32_t provider, uint32_t table, std::byte* buffer,
                                  uint32_t size) override;

 private:
  Context& m_context;
  const std::vector<uint8_t> m_table;
};

class VirtualSessions final : public platform::Sessions {
 public:
  VirtualSessions(Context& context, const std::vector<Session>& sessions);
  bool WTSEnumerateSessionsW(const platform::SessionInfo*& list, uint32_t& count) override;

 private:
  Context& m_context;
  std::vector<std::u16string> m_names;
  std::vector<platform::SessionInfo> m_sessions;
};

class VirtualSystemInformation final : public platform::SystemInformation {
 public:
  VirtualSystemInformation(Context& context, const Notebook& notebook, Nanoseconds boot);
  bool LookUpNtQuerySystemInformation() override;
  uint32_t NtQuerySystemInformation(uint32_t information_class,
                                    std::span<std::byte> buffer) override;
  bool FileTimeToLocalFileTime(platform::FileTime utc, platform::FileTime& local) override;
  bool FileTimeToSystemTime(platform::FileTime time, platform::SystemTime& broken_down) override;
  uint32_t GetModuleFileNameW(std::span<char16_t> path) override;
  uint32_t GetFileVersionInfoSizeW(const char16_t* path) override;
  bool GetFileVersionInfoW(const char16_t* path, std::span<std::byte> block) override;
  bool VerQueryValueW(std::span<const std::byte> block, platform::FixedFileInfo& info) override;

 private:
  Context& m_context;
  const std::u16string m_path;
  const std::string m_version;
  const Nanoseconds m_boot;
};

}  // namespace nuvelta::virtual_notebook
