#include "fake_platform.h"

#include <algorithm>
#include <cstring>

#include "notebook/machine/code_page.h"

namespace nuvelta::fuzz {

namespace {

constexpr uint32_t kErrorNoData = 232;
constexpr size_t kLargestBlock = 1U << 20U;

template <class Unit>
int Copy(std::basic_string_view<Unit> text, std::span<Unit> out) {
  if (out.empty()) return static_cast<int>(text.size());
  if (out.size() < text.size()) return 0;
  std::ranges::copy(text, out.begin());
  return static_cast<int>(text.size());
}

// The service's own names, which are plain letters.
std::string Narrow(std::u16string_view name) {
  std::string narrow;
  for (const char16_t unit : name) narrow += static_cast<char>(unit);
  return narrow;
}

}  // namespace

uint32_t FakeFirmware::GetSystemFirmwareTable(uint32_t /*provider*/, uint32_t /*id*/,
                                              std::byte* buffer, uint32_t size) {
  const auto first = static_cast<uint32_t>(table.size());
  if (buffer == nullptr) return first;
  const uint32_t now = second_size.value_or(first);
  if (now > size) return now;
  // A table that shrinks is cut; one that grows does not get here.
  if (now != 0) std::memcpy(buffer, table.data(), now);
  return now;
}

void* FakeMemory::HeapAlloc(size_t bytes) {
  if (refuse || bytes > kLargestBlock) return nullptr;
  void* const block = std::malloc(bytes == 0 ? 1 : bytes);
  const size_t stale = std::min(bytes, left_over.size());
  if (stale != 0) std::memcpy(block, left_over.data(), stale);
  ++blocks;
  return block;
}

void FakeMemory::HeapFree(void* block) noexcept {
  if (block != nullptr) --blocks;
  std::free(block);
}

uint32_t FakeRegistry::OpenPath(const std::string& path, platform::KeyHandle& key) {
  for (size_t i = 0; i < keys.size(); ++i) {
    if (keys[i].path != path) continue;
    if (keys[i].open_status != 0) return keys[i].open_status;
    ++open;
    key = static_cast<platform::KeyHandle>(i + 1);
    return platform::kErrorSuccess;
  }
  return platform::kErrorFileNotFound;
}

platform::KeyHandle FakeRegistry::Open(const std::string& path) {
  platform::KeyHandle key{};
  OpenPath(path, key);
  return key;
}

FakeRegistry::Key* FakeRegistry::Find(platform::KeyHandle key) {
  const auto index = static_cast<size_t>(key) - 1;
  return index < keys.size() ? &keys[index] : nullptr;
}

FakeRegistry::Value* FakeRegistry::Find(platform::KeyHandle key, std::string_view name) {
  Key* const found = Find(key);
  if (found == nullptr) return nullptr;
  const auto value = std::ranges::find(found->values, name, &Value::name);
  return value == found->values.end() ? nullptr : &*value;
}

uint32_t FakeRegistry::RegOpenKeyExW(std::u16string_view subkey, uint32_t /*access*/,
                                     platform::KeyHandle& key) {
  return OpenPath(Narrow(subkey), key);
}

uint32_t FakeRegistry::RegOpenKeyExA(platform::KeyHandle parent, std::string_view subkey,
                                     uint32_t /*access*/, platform::KeyHandle& key) {
  const Key* const found = Find(parent);
  if (found == nullptr) return platform::kErrorInvalidHandle;
  return OpenPath(found->path + "\\" + std::string(subkey), key);
}

uint32_t FakeRegistry::RegQueryValueExW(platform::KeyHandle key, std::u16string_view value,
                                        uint32_t& type, std::byte* data, uint32_t& size) {
  Value* const found = Find(key, Narrow(value));
  if (found == nullptr) return platform::kErrorFileNotFound;
  ++found->queries;
  if (data == nullptr) {
    if (found->asked_status != 0) return found->asked_status;
    type = found->asked_type;
    size = found->asked_size;
    return platform::kErrorSuccess;
  }
  type = found->type;
  return RegQueryValueExA(key, found->name, data, size);
}

uint32_t FakeRegistry::RegQueryValueExA(platform::KeyHandle key, std::string_view value,
                                        std::byte* data, uint32_t& size) {
  const Value* const found = Find(key, value);
  if (found == nullptr) return platform::kErrorFileNotFound;
  if (found->status != 0) return found->status;
  const uint32_t room = size;
  size = static_cast<uint32_t>(found->data.size());
  if (size > room) return platform::kErrorMoreData;
  if (size != 0) std::memcpy(data, found->data.data(), size);
  return platform::kErrorSuccess;
}

uint32_t FakeRegistry::RegEnumKeyExA(platform::KeyHandle key, uint32_t index,
                                     std::span<char> name) {
  const Key* const parent = Find(key);
  if (parent == nullptr) return platform::kErrorInvalidHandle;
  for (const Key& child : keys) {
    if (child.path.size() <= parent->path.size() || !child.path.starts_with(parent->path + "\\")) {
      continue;
    }
    if (index-- != 0) continue;
    const std::string_view last = std::string_view(child.path).substr(parent->path.size() + 1);
    if (last.size() >= name.size()) return platform::kErrorMoreData;
    std::ranges::copy(last, name.begin());
    name[last.size()] = '\0';
    return platform::kErrorSuccess;
  }
  return platform::kErrorNoMoreItems;
}

uint32_t FakeRegistry::RegCloseKey(platform::KeyHandle key) noexcept {
  if (key == platform::KeyHandle{} || open == 0) std::abort();  // closed what was not open
  --open;
  return platform::kErrorSuccess;
}

uint32_t FakeNetwork::GetAdaptersAddresses(uint32_t /*family*/, uint32_t /*flags*/, void* buffer,
                                           uint32_t& size) {
  if (adapters.empty()) return kErrorNoData;
  const auto needed = static_cast<uint32_t>(adapters.size() * sizeof(platform::AdapterRecord));
  const uint32_t room = size;
  size = needed;
  if (buffer == nullptr || room < needed) return platform::kErrorBufferOverflow;
  if (status != 0) return status;
  auto* const records = static_cast<platform::AdapterRecord*>(buffer);
  for (size_t i = 0; i < adapters.size(); ++i) {
    const Adapter& adapter = adapters[i];
    new (&records[i]) platform::AdapterRecord{
        .Next = i + 1 == adapters.size() ? nullptr : &records[i + 1],
        .AdapterName = adapter.name ? adapter.name->c_str() : nullptr,
        .Description = adapter.description ? adapter.description->c_str() : nullptr,
        .FriendlyName = adapter.description ? adapter.description->c_str() : nullptr,
        .IfType = adapter.if_type,
        .OperStatus = 1};
  }
  return platform::kErrorSuccess;
}

platform::AdapterRecord FakeNetwork::ReadAdapter(const void* record) {
  return *static_cast<const platform::AdapterRecord*>(record);
}

platform::KeyHandle FakeNetwork::SetupDiOpenClassRegKeyExW(const platform::Guid& /*device_class*/,
                                                           uint32_t /*access*/,
                                                           uint32_t /*flags*/) {
  return has_class_key ? m_registry.Open(kClassKey)
                       : platform::InvalidHandle<platform::KeyHandle>();
}

platform::DeviceSetHandle FakeDevices::SetupDiGetClassDevsW(uint32_t /*flags*/) {
  if (refuse) return platform::InvalidHandle<platform::DeviceSetHandle>();
  ++open;
  return static_cast<platform::DeviceSetHandle>(1);
}

bool FakeDevices::SetupDiEnumDeviceInfo(platform::DeviceSetHandle /*set*/, uint32_t index,
                                        platform::DeviceInfoData& device) {
  device.DevInst = index;
  return index < properties.size();
}

bool FakeDevices::SetupDiGetDeviceRegistryPropertyW(platform::DeviceSetHandle /*set*/,
                                                    platform::DeviceInfoData& device,
                                                    uint32_t /*property*/,
                                                    std::span<std::byte> buffer) {
  const auto& property = properties.at(device.DevInst);
  if (!property || property->size() > buffer.size()) return false;
  if (!property->empty()) std::memcpy(buffer.data(), property->data(), property->size());
  return true;
}

bool FakeDevices::SetupDiDestroyDeviceInfoList(platform::DeviceSetHandle /*set*/) noexcept {
  --open;
  return true;
}

platform::EventLogHandle FakeEventLog::OpenEventLogW(std::u16string_view /*log*/) {
  if (refuse) return {};
  ++open;
  m_at = 0;
  answered.clear();
  return static_cast<platform::EventLogHandle>(1);
}

bool FakeEventLog::ReadEventLogW(platform::EventLogHandle /*log*/, uint32_t /*flags*/,
                                 uint32_t /*offset*/, std::span<std::byte> buffer, uint32_t& read,
                                 uint32_t& needed) {
  needed = 0;
  if (m_at >= records.size()) return false;
  const size_t count = std::min({chunk, records.size() - m_at, buffer.size()});
  if (count != 0) std::memcpy(buffer.data(), records.data() + m_at, count);
  m_at += count;
  read = static_cast<uint32_t>(count) + lie;
  const auto* const seen = reinterpret_cast<const uint8_t*>(buffer.data());
  answered.emplace_back(seen, seen + std::min<size_t>(read, buffer.size()));
  return true;
}

bool FakeEventLog::CloseEventLog(platform::EventLogHandle /*log*/) noexcept {
  --open;
  return true;
}

int64_t FakeClock::time() noexcept {
  return std::chrono::floor<std::chrono::seconds>(now.time_since_epoch()).count();
}

std::tm FakeClock::localtime(int64_t seconds) noexcept {
  const time_t time = seconds;
  std::tm broken_down{};
  gmtime_r(&time, &broken_down);
  return broken_down;
}

int FakeText::WideCharToMultiByte(std::u16string_view wide, std::span<char> out) {
  return Copy<char>(virtual_notebook::ToCodePage(wide), out);
}

int FakeText::MultiByteToWideChar(std::string_view narrow, std::span<char16_t> out) {
  return Copy<char16_t>(virtual_notebook::FromCodePage(narrow), out);
}

FakePlatform::FakePlatform() {
  setenv("TZ", "UTC", 1);
  tzset();
  m_platform.clock = &clock;
  m_platform.devices = &devices;
  m_platform.environment = &environment;
  m_platform.event_log = &event_log;
  m_platform.files = &files;
  m_platform.firmware = &firmware;
  m_platform.memory = &memory;
  m_platform.network = &network;
  m_platform.registry = &registry;
  m_platform.text = &text;
  m_platform.threads = &threads;
  platform::Install(&m_platform);
}

FakePlatform::~FakePlatform() { platform::Install(nullptr); }

bool FakePlatform::HoldsNothing() const {
  return memory.blocks == 0 && registry.open == 0 && devices.open == 0 && event_log.open == 0;
}

}  // namespace nuvelta::fuzz
