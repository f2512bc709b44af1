// A notebook as a capture finds it: all that the service reads there, as plain data.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/types.h"
#include "support/query_watch.h"

namespace nuvelta::support {

using Bytes = std::vector<uint8_t>;

// Texts are UTF-8; what the system hands out in another form stays as it is.

struct CapturedValue {
  std::string key, name;
  uint32_t type = 0;
  Bytes data{};
};

struct CapturedAdapter {
  std::string name, description, friendly_name;
  uint32_t type = 0;
  uint32_t state = 0;
  bool in_class_key = false;
  std::optional<std::string> instance_id{};
};

struct CapturedSession {
  uint32_t id = 0;
  std::string name;
  uint32_t state = 0;
};

struct CapturedService {
  std::string name;
  uint32_t process = 0;
};

struct CapturedLog {
  std::string name;
  int64_t age = 0;  // seconds
  uint64_t size = 0;
  std::optional<std::string> content{};  // absent: only its size is told
};

struct CapturedModem {
  bool offered = false;       // by Windows
  uint32_t error = 0;         // of asking for it, an HRESULT
  std::string failed_call{};  // as scenarios name it
  std::vector<std::string> services{};
  bool asked = false;
  QueryRecord query{};
};

struct CapturedNotebook {
  std::string time;         // local
  int32_t east_of_utc = 0;  // seconds
  double uptime = 0;        // seconds
  bool uptime_seen = false;
  std::optional<Bytes> firmware{};
  std::vector<CapturedValue> registry{};
  std::vector<CapturedAdapter> adapters{};
  std::vector<std::optional<Bytes>> devices{};  // their hardware-id properties
  CapturedModem modem{};
  std::optional<uint32_t> accounts{};  // of mobile broadband
  std::vector<Bytes> records{};        // of the Application log, oldest first
  std::vector<CapturedSession> sessions{};
  std::vector<CapturedService> services{};
  std::vector<CapturedLog> logs{};
  std::string program_data{};
  std::string program_path{};
  std::string program_version{};
  // What the system did not let itself be asked, a sentence each.
  std::vector<std::string> not_seen{};
};

}  // namespace nuvelta::support
