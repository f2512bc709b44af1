#include "wine/story/wine_devices.h"

#include <windows.h>

#include <setupapi.h>

#include <cstdio>
#include <optional>
#include <stdexcept>
#include <utility>
#include <vector>

#include "notebook/model/device_tables.h"
#include "wine/story/wide.h"

namespace nuvelta::wine {

namespace {

using virtual_notebook::Adapter;
using virtual_notebook::Device;
using virtual_notebook::ModemDescription;
using virtual_notebook::Utf16Bytes;

constexpr const wchar_t* kEnumKey = L"SYSTEM\\CurrentControlSet\\Enum\\NUVELTASTORY";
// Wine lists devices in the order of their names.
constexpr const wchar_t* kModemDevice = L"NUVELTASTORY\\MODEM\\0000";
constexpr const wchar_t* kModemEnumKey = L"SYSTEM\\CurrentControlSet\\Enum\\NUVELTASTORY\\MODEM";
// GUID_DEVCLASS_SYSTEM: a class whose key the service does not read.
constexpr GUID kDeviceClass{
    0x4D36E97D, 0xE325, 0x11CE, {0xBF, 0xC1, 0x08, 0x00, 0x2B, 0xE1, 0x03, 0x18}};

[[noreturn]] void Fail(const char* call, DWORD error) {
  throw std::runtime_error(std::string(call) + ": error " + std::to_string(error));
}

// A device list that is empty but for what is put or opened into it.
class DeviceList {
 public:
  DeviceList() : m_list(SetupDiCreateDeviceInfoList(nullptr, nullptr)) {
    if (m_list == INVALID_HANDLE_VALUE) Fail("SetupDiCreateDeviceInfoList", GetLastError());
  }
  ~DeviceList() { SetupDiDestroyDeviceInfoList(m_list); }
  DeviceList(const DeviceList&) = delete;
  DeviceList& operator=(const DeviceList&) = delete;
  HDEVINFO Get() const { return m_list; }

 private:
  HDEVINFO m_list;
};

class Key {
 public:
  // Creates the key below HKEY_LOCAL_MACHINE when it is not there.
  explicit Key(const std::wstring& path) {
    const LSTATUS error = RegCreateKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, nullptr, 0,
                                          KEY_ALL_ACCESS, nullptr, &m_key, nullptr);
    if (error != ERROR_SUCCESS) Fail("RegCreateKeyExW", static_cast<DWORD>(error));
  }
  ~Key() { RegCloseKey(m_key); }
  Key(const Key&) = delete;
  Key& operator=(const Key&) = delete;

  void SetText(const wchar_t* name, const std::string& text) const {
    const std::vector<uint8_t> bytes = Utf16Bytes(text, 1);
    const LSTATUS error =
        RegSetValueExW(m_key, name, 0, REG_SZ, bytes.data(), static_cast<DWORD>(bytes.size()));
    if (error != ERROR_SUCCESS) Fail("RegSetValueExW", static_cast<DWORD>(error));
  }
  // Whether the value is this text.
  bool Has(const wchar_t* name, const std::string& text) const {
    const std::vector<uint8_t> wanted = Utf16Bytes(text, 1);
    std::vector<uint8_t> found(wanted.size());
    auto size = static_cast<DWORD>(found.size());
    return RegQueryValueExW(m_key, name, nullptr, nullptr, found.data(), &size) == ERROR_SUCCESS &&
           size == wanted.size() && found == wanted;
  }

 private:
  HKEY m_key = nullptr;
};

bool Exists(const std::wstring& path) {
  HKEY key = nullptr;
  if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) {
    return false;
  }
  RegCloseKey(key);
  return true;
}

void SetHardwareId(HDEVINFO list, SP_DEVINFO_DATA& device, const std::vector<uint8_t>& bytes) {
  if (SetupDiSetDeviceRegistryPropertyW(list, &device, SPDRP_HARDWAREID, bytes.data(),
                                        static_cast<DWORD>(bytes.size())) == FALSE) {
    Fail("SetupDiSetDeviceRegistryPropertyW", GetLastError());
  }
}

void InstallDevice(const wchar_t* id, const Device& device) {
  const DeviceList list;
  SP_DEVINFO_DATA data{};
  data.cbSize = sizeof data;
  if (SetupDiCreateDeviceInfoW(list.Get(), id, &kDeviceClass, nullptr, nullptr, 0, &data) ==
      FALSE) {
    Fail("SetupDiCreateDeviceInfoW", GetLastError());
  }
  if (device.has_hardware_id) {
    SetHardwareId(list.Get(), data, virtual_notebook::HardwareIdBytes(device));
  }
  if (SetupDiRegisterDeviceInfo(list.Get(), &data, 0, nullptr, nullptr, nullptr) == FALSE) {
    Fail("SetupDiRegisterDeviceInfo", GetLastError());
  }
}

std::wstring ClassKey() { return Wide(virtual_notebook::kNetworkClassKey); }

std::wstring ClassSubkey(unsigned number) {
  wchar_t name[16];
  std::swprintf(name, sizeof name / sizeof *name, L"\\%04u", number);
  return ClassKey() + name;
}

void WriteClassSubkey(const std::wstring& path, const Adapter& adapter) {
  const Key key(path);
  for (const auto& [name, text] : virtual_notebook::ClassKeyTexts(adapter)) {
    key.SetText(Wide(name).c_str(), text);
  }
}

// The modem's subkey goes behind those that there are.
void WriteModemSubkey(const ModemDescription& modem) {
  unsigned number = 0;
  for (; Exists(ClassSubkey(number)); ++number) {
    const Key key(ClassSubkey(number));
    if (key.Has(L"NetCfgInstanceId", modem.adapter_name) &&
        key.Has(L"DeviceInstanceID", modem.instance_id)) {
      return;
    }
  }
  WriteClassSubkey(ClassSubkey(number), virtual_notebook::ModemAdapter(modem));
}

}  // namespace

void InstallStoryDevices(const virtual_notebook::Notebook& notebook) {
  for (size_t i = 0; i < notebook.devices.size(); ++i) {
    wchar_t id[64];
    std::swprintf(id, sizeof id / sizeof *id, L"NUVELTASTORY\\DEVICE%05u\\0000",
                  static_cast<unsigned>(i));
    InstallDevice(id, notebook.devices[i]);
  }
  { const Key configuration(ClassKey() + L"\\Configuration"); }
  unsigned number = 0;
  for (const Adapter& adapter : notebook.adapters) {
    if (adapter.in_class_key) WriteClassSubkey(ClassSubkey(number++), adapter);
  }
  if (notebook.modem.present) InstallModemDevice(notebook.modem);
}

void InstallModemDevice(const ModemDescription& modem) {
  RemoveModemDevice();
  InstallDevice(kModemDevice, {.hardware_id = modem.hardware_id});
  WriteModemSubkey(modem);
}

void RemoveModemDevice() { RegDeleteTreeW(HKEY_LOCAL_MACHINE, kModemEnumKey); }

void ChangeModemHardwareId(const std::string& hardware_id) {
  if (!Exists(kModemEnumKey)) return;
  const DeviceList list;
  SP_DEVINFO_DATA data{};
  data.cbSize = sizeof data;
  if (SetupDiOpenDeviceInfoW(list.Get(), kModemDevice, nullptr, 0, &data) == FALSE) {
    Fail("SetupDiOpenDeviceInfoW", GetLastError());
  }
  SetHardwareId(list.Get(), data, Utf16Bytes(hardware_id, 2));
}

void RemoveStoryDevices() noexcept {
  RegDeleteTreeW(HKEY_LOCAL_MACHINE, kEnumKey);
  RegDeleteTreeW(HKEY_LOCAL_MACHINE, ClassKey().c_str());
}

}  // namespace nuvelta::wine
