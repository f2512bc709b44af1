// A platform on a single thread whose answers an input decides. It keeps to what
// the ports promise and no further: answers change between two calls, sizes lie
// as far as they may, everything can be refused. The ports that no fuzz target
// reaches are missing.
#pragma once

#include <chrono>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

#include "platform/clock.h"
#include "platform/devices.h"
#include "platform/environment.h"
#include "platform/event_log.h"
#include "platform/files.h"
#include "platform/firmware.h"
#include "platform/memory.h"
#include "platform/network.h"
#include "platform/platform.h"
#include "platform/registry.h"
#include "platform/text.h"
#include "platform/threads.h"

namespace nuvelta::fuzz {

class FakeFirmware final : public platform::Firmware {
 public:
  std::vector<uint8_t> table;           // as the first of two calls finds it
  std::optional<uint32_t> second_size;  // its size at the second, when it has changed

  uint32_t GetSystemFirmwareTable(uint32_t provider, uint32_t id, std::byte* buffer,
                                  uint32_t size) override;
};

class FakeMemory final : public platform::Memory {
 public:
  bool refuse = false;
  size_t blocks = 0;               // not yet freed
  std::vector<uint8_t> left_over;  // what lay in a new block before

  void* HeapAlloc(size_t bytes) override;
  void HeapFree(void* block) noexcept override;
  void* LocalAlloc(size_t bytes) override { return HeapAlloc(bytes); }
  void LocalFree(void* block) noexcept override { HeapFree(block); }
};

class FakeRegistry final : public platform::Registry {
 public:
  struct Value {
    std::string name;
    uint32_t status = 0;  // of a query with a buffer
    uint32_t type = 4;
    std::vector<uint8_t> data;
    // What a query without a buffer answers.
    uint32_t asked_status = 0;
    uint32_t asked_type = 4;
    uint32_t asked_size = 0;
    size_t queries = 0;
  };
  struct Key {
    std::string path;
    std::vector<Value> values;
    uint32_t open_status = 0;
  };
  std::vector<Key> keys;
  size_t open = 0;

  platform::KeyHandle Open(const std::string& path);

  uint32_t RegOpenKeyExW(std::u16string_view subkey, uint32_t access,
                         platform::KeyHandle& key) override;
  uint32_t RegOpenKeyExA(platform::KeyHandle parent, std::string_view subkey, uint32_t access,
                         platform::KeyHandle& key) override;
  uint32_t RegQueryValueExW(platform::KeyHandle key, std::u16string_view value, uint32_t& type,
                            std::byte* data, uint32_t& size) override;
  uint32_t RegQueryValueExA(platform::KeyHandle key, std::string_view value, std::byte* data,
                            uint32_t& size) override;
  uint32_t RegEnumKeyExA(platform::KeyHandle key, uint32_t index, std::span<char> name) override;
  uint32_t RegCloseKey(platform::KeyHandle key) noexcept override;

 private:
  uint32_t OpenPath(const std::string& path, platform::KeyHandle& key);
  Key* Find(platform::KeyHandle key);
  Value* Find(platform::KeyHandle key, std::string_view name);
};

class FakeNetwork final : public platform::NetworkAdapters {
 public:
  static constexpr const char* kClassKey = "class";
  struct Adapter {
    std::optional<std::string> name;
    std::optional<std::u16string> description;
    uint32_t if_type = 0;
  };
  std::vector<Adapter> adapters;
  uint32_t status = 0;  // of the call that fills
  bool has_class_key = true;

  explicit FakeNetwork(FakeRegistry& registry) : m_registry(registry) {}
  uint32_t GetAdaptersAddresses(uint32_t family, uint32_t flags, void* buffer,
                                uint32_t& size) override;
  platform::AdapterRecord ReadAdapter(const void* record) override;
  platform::KeyHandle SetupDiOpenClassRegKeyExW(const platform::Guid& device_class, uint32_t access,
                                                uint32_t flags) override;

 private:
  FakeRegistry& m_registry;
};

class FakeDevices final : public platform::Devices {
 public:
  std::vector<std::optional<std::vector<uint8_t>>> properties;  // of one device each
  bool refuse = false;
  size_t open = 0;

  platform::DeviceSetHandle SetupDiGetClassDevsW(uint32_t flags) override;
  bool SetupDiEnumDeviceInfo(platform::DeviceSetHandle set, uint32_t index,
                             platform::DeviceInfoData& device) override;
  bool SetupDiGetDeviceRegistryPropertyW(platform::DeviceSetHandle set,
                                         platform::DeviceInfoData& device, uint32_t property,
                                         std::span<std::byte> buffer) override;
  bool SetupDiDestroyDeviceInfoList(platform::DeviceSetHandle set) noexcept override;
};

class FakeEventLog final : public platform::EventLog {
 public:
  std::vector<uint8_t> records;
  size_t chunk = 0;  // bytes a read at most
  uint32_t lie = 0;  // added to what a read says it has read
  bool refuse = false;
  size_t open = 0;
  std::vector<std::vector<uint8_t>> answered;  // what the buffer held after each read

  platform::EventLogHandle OpenEventLogW(std::u16string_view log) override;
  bool ReadEventLogW(platform::EventLogHandle log, uint32_t flags, uint32_t offset,
                     std::span<std::byte> buffer, uint32_t& read, uint32_t& needed) override;
  bool CloseEventLog(platform::EventLogHandle log) noexcept override;

 private:
  size_t m_at = 0;
};

class FakeClock final : public platform::Clock {
 public:
  std::chrono::system_clock::time_point now;

  std::chrono::system_clock::time_point Now() noexcept override { return now; }
  int64_t time() noexcept override;
  std::tm localtime(int64_t seconds) noexcept override;
  int64_t clock() noexcept override { return 0; }
};

class FakeThreads final : public platform::Threads {
 public:
  uint32_t thread_id = 0;
  uint32_t last_error = 0;

  // No thread can be had, and nothing blocks.
  platform::ThreadHandle CreateThread(platform::ThreadProcedure, void*, const char*) override {
    return {};
  }
  bool StartDetachedThread(std::function<void()>, const char*) override { return false; }
  platform::EventHandle CreateEventW(bool, bool) override { return {}; }
  bool SetEvent(platform::EventHandle) override { return false; }
  bool ResetEvent(platform::EventHandle) override { return false; }
  bool CloseHandle(platform::EventHandle) noexcept override { return false; }
  uint32_t WaitForSingleObject(platform::EventHandle, uint32_t) override {
    return platform::kWaitFailed;
  }
  platform::CriticalSectionHandle InitializeCriticalSectionAndSpinCount(uint32_t) override {
    return {};
  }
  void EnterCriticalSection(platform::CriticalSectionHandle) override {}
  void LeaveCriticalSection(platform::CriticalSectionHandle) noexcept override {}
  void Sleep(uint32_t) override {}
  uint32_t GetCurrentThreadId() noexcept override { return thread_id; }
  uint32_t GetCurrentProcessId() noexcept override { return 1; }
  uint32_t GetLastError() noexcept override { return last_error; }
};

class FakeText final : public platform::Text {
 public:
  int WideCharToMultiByte(std::u16string_view wide, std::span<char> out) override;
  int MultiByteToWideChar(std::string_view narrow, std::span<char16_t> out) override;
};

class FakeFiles final : public platform::Files {
 public:
  std::string library_path;  // of whatever file the logging library opens

  int _mkdir(const std::string&) override { return 0; }
  platform::FindHandle FindFirstFileA(const std::string&, platform::FindData&) override {
    return platform::InvalidHandle<platform::FindHandle>();
  }
  bool FindNextFileA(platform::FindHandle, platform::FindData&) override { return false; }
  bool FindClose(platform::FindHandle) noexcept override { return true; }
  bool DeleteFileA(const std::string&) override { return false; }
  std::string LibraryPath(const std::string&) override { return library_path; }
};

class FakeEnvironment final : public platform::Environment {
 public:
  std::string GetVariable(std::string_view) override { return "C:\\ProgramData"; }
  void WriteStandardOutput(std::string_view) override { std::abort(); }  // no target may fail so
  void InstallCrashDumpWriter() override {}
};

class FakePlatform {
 public:
  // Installs itself; in time zone UTC.
  FakePlatform();
  ~FakePlatform();
  FakePlatform(const FakePlatform&) = delete;
  FakePlatform& operator=(const FakePlatform&) = delete;

  // True when every handle and heap block has been given back.
  bool HoldsNothing() const;

  FakeClock clock;
  FakeDevices devices;
  FakeEnvironment environment;
  FakeEventLog event_log;
  FakeFiles files;
  FakeFirmware firmware;
  FakeMemory memory;
  FakeRegistry registry;
  FakeNetwork network{registry};
  FakeText text;
  FakeThreads threads;

 private:
  platform::Platform m_platform;
};

}  // namespace nuvelta::fuzz
