// What the doctor sees of a notebook, step by step, and what it makes of it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "modem/hardware_id.h"
#include "platform/inspection.h"
#include "support/query_watch.h"
#include "support/rehearsal.h"

namespace nuvelta::support {

// Texts are as the service reads them, in the ANSI code page; `error` is the Win32 status
// code, or HRESULT, of a step that was not seen.

struct ServiceFacts {
  std::string name;
  uint32_t error = 0;
  bool installed = false;
  platform::ServiceProcess process{};
  uint32_t since_error = 0;
  std::string since{};  // when its process began, local time
  uint32_t configuration_error = 0;
  platform::ServiceConfiguration configuration{};
  std::string image{}, account{};
  uint32_t recovery_error = 0;
  platform::ServiceFailureActions recovery{};
};

struct LogFolderFacts {
  struct Entry {
    bool allows = false;
    bool inherited = false;
    bool inherit_only = false;
    uint32_t mask = 0;
    std::string account;
  };
  std::string path;
  uint32_t error = 0;  // of owner and rights
  std::string owner{};
  bool has_list = false;
  std::vector<Entry> entries{};
  uint64_t logs = 0;  // files named like the service's
  std::string newest{};
  uint32_t newest_error = 0;
  uint64_t newest_size = 0;
};

struct SwitchFacts {
  std::string key, name;
  uint32_t error = 0;  // of opening the key, or of the query
  uint32_t type = 0;
  std::vector<uint8_t> data{};
  int32_t read = -1;  // what the service makes of it
};

struct FirmwareFacts {
  bool has_table = false;
  uint32_t size = 0;
  uint32_t error = 0;
  uint8_t major = 0, minor = 0;
  std::string manufacturer, product, version, family, board_product;
  bool by_family = false;  // the platform's name is the family's
  bool cs24 = false;
  std::string key;
  bool listed = false;
  std::vector<std::string> allowed;
};

struct FccFacts {
  bool structure = false;  // there is one of the type
  uint8_t length = 0;      // of the first one
  bool right_length = false;
  bool closed = false;
  std::vector<uint8_t> content{};
  size_t content_length = 0;
  bool declared = false;
};

struct AdapterFacts {
  std::string name, description, friendly_name;
  uint32_t type = 0;
  uint32_t state = 0;
  bool examined = false;  // the first mobile-broadband one, at which the service looks
};

struct AdapterListFacts {
  uint32_t error = 0;
  std::vector<AdapterFacts> adapters{};
  // Of the examined one: its entry below the class key.
  uint32_t class_error = 0;
  std::string subkey{};
  std::string instance_id{};
  std::string compared{};
  bool expected = false;
};

struct DeviceFacts {
  uint32_t number = 0;  // in the list of all devices, from 0
  std::string hardware_id;
  HwidOwner owner = HwidOwner::kOther;
  bool decides = false;
};

struct DeviceListFacts {
  uint32_t error = 0;
  uint32_t devices = 0;               // all that are present
  std::vector<DeviceFacts> marked{};  // those that carry the maker's marks
  std::string id{};                   // by which the platform check knows the modem
};

struct ModemFacts {
  uint32_t error = 0;  // an HRESULT
  std::string failed_call{};
  bool present = false;
  std::vector<std::string> services{};
  bool vendor_service = false;
  bool asked = false;
  QueryRecord query{};
  std::optional<int64_t> milliseconds{};
  std::optional<int32_t> level{};
};

struct Diagnosis {
  std::string time;
  ServiceFacts service;
  LogFolderFacts log_folder;
  std::vector<SwitchFacts> switches;
  FirmwareFacts firmware;
  FccFacts fcc;
  AdapterListFacts network;
  DeviceListFacts devices;
  ModemFacts modem;
  // What the service would come to if an adapter arrived now.
  Run run;
};

enum class StepState : uint8_t {
  kTold,     // nothing rests on it
  kGood,     // as the radio needs it
  kWarning,  // to be known: a check that is switched off
  kBad,      // keeps the radio off, as far as this step goes
  kNotSeen,
};

struct StepStates {
  StepState service, log_folder, switches, firmware, platform, fcc_mode, adapters, devices, modem,
      query;
};

StepStates StatesOf(const Diagnosis& diagnosis);

// What the stored value of a switch does, in a sentence.
std::string MeaningOf(const SwitchFacts& facts);
// Whether it switches the checks of platform and FCC mode off.
bool SwitchesChecksOff(const SwitchFacts& facts);

}  // namespace nuvelta::support
