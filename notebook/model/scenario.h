// A story as data: the notebook it plays on, what happens to it and when, and
// which operating-system calls are made to fail. docs/scenarios.md describes the
// JSON form; scenario_reader.h reads it. The defaults below describe a supported
// notebook with a healthy modem.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/types.h"
#include "platform/vendor_service.h"

namespace nuvelta::virtual_notebook {

using Duration = std::chrono::nanoseconds;

// An SMS service, as an example of the other services that modems list.
inline constexpr platform::Guid kSmsService{
    0x533FBEEB, 0x14FE, 0x4467, {0x9F, 0x90, 0x33, 0xA2, 0x23, 0xE5, 0x6C, 0x3F}};

// The SMBIOS table as named fields; smbios_builder.h makes the bytes.
struct SmbiosFields {
  std::string system_manufacturer = "Example Computers";
  std::string system_product = "21ML0012US";
  std::string system_version = "ThinkPad T14 Gen 5";
  std::string system_serial = "PF000001";
  std::string system_sku = "EXAMPLE_SKU_21ML";
  std::string system_family = "ThinkPad T14 Gen 5";
  uint8_t system_length = 27;  // formatted length of the system structure
  std::string processor_manufacturer = "Example Silicon";
  std::string processor_version = "Example CPU 7";
  std::string baseboard_manufacturer = "Example Computers";
  std::string baseboard_product = "21ML0012US";
  std::string baseboard_version = "SDK0T76538 WIN";
  std::string baseboard_serial = "L1HF000001";
  std::string baseboard_asset_tag = "No Asset Tag";
  // The FCC structure (type 133): its data byte and first string, together;
  // absent when the firmware has no such structure.
  std::optional<std::vector<uint8_t>> fcc_content;  // the reader presets the marker
  uint8_t fcc_length = 5;                           // formatted length of the FCC structure
};

struct RegistryValue {
  uint32_t type = 4;            // REG_*
  std::vector<uint8_t> data{};  // as stored: UTF-16 for texts
};
// Full key path below HKEY_LOCAL_MACHINE to value name to value.
using RegistryContent = std::map<std::string, std::map<std::string, RegistryValue>>;

struct Adapter {
  std::string name;  // the interface GUID text
  std::string description;
  std::string friendly_name;
  uint32_t if_type = 6;
  uint32_t oper_status = 1;
  // DeviceInstanceID below the class key; absent: no such value.
  std::optional<std::string> instance_id;
  bool in_class_key = true;
};

struct Device {
  std::string hardware_id;  // the first string of the hardware-id property
  // The whole property as given, instead of hardware_id and its terminators.
  std::optional<std::vector<uint8_t>> raw_hardware_id{};
  bool has_hardware_id = true;
};

// One answer of the modem to a command.
struct Answer {
  enum class Kind { kHealthy, kNever, kStatus, kData, kNoData, kHresult, kCanceled, kError };
  Kind kind = Kind::kHealthy;
  std::optional<Duration> after{};  // instead of the modem's latency
  uint32_t code = 0;                // the status code or HRESULT
  std::vector<uint8_t> data;        // kData: the response bytes
  uint32_t times = 1;               // commands that it serves; 0: all that follow
};

struct ModemDescription {
  bool present = true;
  std::string hardware_id = "USB\\VID_3A5E&PID_4A10&REV_0318&MI_00";
  std::string instance_id = "USB\\VID_3A5E&PID_4A10&MI_00\\6&2A1B3C4D&0&0000";
  std::string adapter_name = "{5C1E7A90-3D42-4B7E-9C55-0A2B4C6D8E10}";
  std::string description = "HX2208 Mobile Broadband";
  std::string friendly_name = "Cellular";
  uint32_t oper_status = 2;
  // How many of the other adapters and devices are listed before its own; absent: all.
  std::optional<uint32_t> adapter_place{};
  std::optional<uint32_t> device_place{};
  bool mbim = true;   // MobileBroadbandModem::GetDefault answers it
  int32_t radio = 4;  // CFUN
  std::vector<platform::Guid> device_services{kSmsService, platform::kVendorService};
  Duration latency = std::chrono::milliseconds(20);
  std::vector<Answer> query;
  std::vector<Answer> set;
};

struct EventRecord {
  Duration at{};  // from the story's start; before it when negative
  std::string source = "Wlclntfy";
  uint16_t type = 4;  // EVENTLOG_INFORMATION_TYPE
  uint32_t event_id = 6001;
  uint16_t category = 0;
  // The record's bytes as given, hostile ones included.
  std::optional<std::vector<uint8_t>> raw{};
};

struct Session {
  uint32_t id = 1;
  std::string name = "Console";
  uint32_t state = 0;  // WTS_CONNECTSTATE_CLASS
};

struct OldLog {
  std::string name;  // empty: named by its age
  Duration age{};
  uint64_t size = 0;                     // bytes
  std::optional<std::string> content{};  // of that size; absent: zeros
  bool in_use = false;
};

// One of the services that the manager lists.
struct ListedService {
  std::string name;
  uint32_t process = 0;  // 0: it does not run
};

struct Notebook {
  bool has_firmware_table = true;
  SmbiosFields firmware;
  std::optional<std::vector<uint8_t>> raw_firmware;  // header and structures
  RegistryContent registry;
  std::vector<Adapter> adapters;  // beside the modem's
  std::vector<Device> devices;    // beside the modem's
  ModemDescription modem;
  uint32_t accounts = 0;  // present before the service starts
  std::vector<EventRecord> event_log{{.at = std::chrono::minutes(-5)}};
  std::vector<Session> sessions{{.id = 0, .name = "Services", .state = 4}, {}};
  // Absent: a few, with this one among them. Of this one the process is not told here; where
  // it is not named it stands last.
  std::optional<std::vector<ListedService>> services{};
  Duration uptime = std::chrono::seconds(42);  // from the boot to the story's start
  std::vector<OldLog> old_logs;
  std::map<std::string, std::string> environment{{"programdata", "C:\\ProgramData"}};
  std::string program_path = "C:\\Program Files\\Nuvelta Wireless\\hx2208_auth_service.exe";
  std::string program_version = "1.0.0.1";  // empty: no version resource
  std::string service_key = "Nuvelta Wireless AUTH Service HX2208";
  // Whether a power setting reaches a service only while it accepts power events,
  // or whenever it has registered for the setting.
  bool power_settings_need_acceptance = false;
};

// What an event does. The members beside `kind` hold what that kind needs.
struct Action {
  enum class Kind {
    kStart,         // net start
    kStop,          // the stop control
    kKill,          // the process is ended from outside
    kControl,       // control `number` with event type `event_type`; `regardless` of the manager
    kArrival,       // a network adapter's interface arrives: `text` is its name
    kRemoval,       // and leaves
    kModemArrives,  // the modem appears and its interface arrives
    kModemLeaves,   // the modem disappears and its interface leaves
    kModemChanges,  // the modem is given the members set in `modem`
    kAccountAdded,
    kAccountRemoved,
    kSuspend,
    kResume,         // PBT_APMRESUMEAUTOMATIC, then PBT_APMRESUMESUSPEND
    kPowerEvent,     // power broadcast `number`
    kSessionChange,  // session change `number`
    kLogon,          // a "Wlclntfy" record is written and a session logs on
    kBattery,        // the battery level is `number` per cent
    kPowerSetting,   // some other power setting changes: `guid`
    kRegistrySet,    // value `value_name` of key `text`
    kRegistryDelete,
    kEventRecord,  // `record` is written to the Application log
  };
  Kind kind = Kind::kStart;
  uint32_t number = 0;
  uint32_t event_type = 0;
  bool regardless = false;
  std::string text;
  std::string value_name;
  RegistryValue value;
  platform::Guid guid;
  EventRecord record;
  struct ModemChange {
    std::optional<int32_t> radio;
    std::optional<bool> mbim;
    std::optional<std::string> hardware_id;
    std::optional<std::vector<platform::Guid>> device_services;
    std::optional<Duration> latency;
    std::optional<std::vector<Answer>> query;
    std::optional<std::vector<Answer>> set;
  } modem;
};

struct Event {
  Duration at{};
  uint32_t repeat = 1;
  Duration every{};
  Action action;
};

// One operating-system call made to fail. port_calls.h lists the calls and the
// failures that each can give.
struct Fault {
  enum class Kind {
    kError,     // the call's own failure answer, with `code` as the error
    kNull,      // a null object
    kHresult,   // HresultError with `code`
    kBadAlloc,  // std::bad_alloc
  };
  std::string call;
  uint32_t nth = 1;    // the first call that fails, counted from 1
  uint32_t count = 1;  // how many calls fail; 0: all from the nth on
  Kind kind = Kind::kError;
  uint32_t code = 0;
};

// An operating-system call that takes longer; the calls are those that can fail.
struct Delay {
  std::string call;
  uint32_t nth = 1;    // the first call that is late, counted from 1
  uint32_t count = 1;  // how many calls are late; 0: all from the nth on
  Duration late{};     // how much longer the call takes, before it does anything
};

struct Scenario {
  std::string title;
  std::string story;
  std::string start_time = "2026-11-16 00:58:46";  // local time at which the story starts
  std::string time_zone = "UTC";                   // a POSIX TZ text
  uint64_t seed = 1;
  Notebook notebook;
  std::vector<Event> events;  // in order of time
  std::vector<Fault> faults;
  std::vector<Delay> delays;
  // After the last event the notebook waits until the service rests, at most
  // this long, and then stops it.
  Duration rest_within = std::chrono::minutes(10);
  bool stop_at_end = true;
};

}  // namespace nuvelta::virtual_notebook
