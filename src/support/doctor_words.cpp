#include "support/doctor_words.h"

#include <array>
#include <cstdio>

namespace nuvelta::support {

namespace {

template <size_t kCount>
const char* NameAt(const std::array<const char*, kCount>& names, uint32_t index) {
  return index < names.size() ? names[index] : "unknown";
}

}  // namespace

const char* ServiceStateName(uint32_t state) {
  static constexpr std::array kNames{"unknown", "stopped",    "starting", "stopping",
                                     "running", "continuing", "pausing",  "paused"};
  return NameAt(kNames, state);
}

const char* StartTypeName(uint32_t type) {
  static constexpr std::array kNames{"boot", "system", "automatic", "manual", "disabled"};
  return NameAt(kNames, type);
}

const char* ActionName(uint32_t type) {
  static constexpr std::array kNames{"nothing", "restart", "reboot", "command"};
  return NameAt(kNames, type);
}

const char* RegistryTypeName(uint32_t type) {
  static constexpr std::array kNames{"REG_NONE",   "REG_SZ",      "REG_EXPAND_SZ",
                                     "REG_BINARY", "REG_DWORD",   "REG_DWORD_BIG_ENDIAN",
                                     "REG_LINK",   "REG_MULTI_SZ"};
  return type == 11 ? "REG_QWORD" : NameAt(kNames, type);
}

const char* AdapterStateName(uint32_t state) {
  static constexpr std::array kNames{"unknown", "up",      "down",        "testing",
                                     "unknown", "dormant", "not present", "lower layer down"};
  return NameAt(kNames, state);
}

const char* StepStateName(StepState state) {
  static constexpr std::array kNames{"told", "good", "warning", "bad", "not_seen"};
  return NameAt(kNames, static_cast<uint32_t>(state));
}

const char* QueryStateName(const QueryRecord& query) {
  static constexpr std::array kNames{"started", "completed", "canceled", "error"};
  return query.state ? NameAt(kNames, static_cast<uint32_t>(*query.state)) : "no answer";
}

std::string AccessName(uint32_t mask) {
  struct Right {
    uint32_t mask;
    const char* name;
  };
  // FILE_ALL_ACCESS, and what the property page of a folder calls the others.
  static constexpr std::array kRights{Right{0x1F01FF, "full control"},
                                      Right{0x10000000, "full control"},
                                      Right{0x1301BF, "modify"},
                                      Right{0x1200A9, "read and execute"},
                                      Right{0xA0000000, "read and execute"},
                                      Right{0x120089, "read"},
                                      Right{0x100116, "write"}};
  for (const Right& right : kRights) {
    if (mask == right.mask) return right.name;
  }
  return "rights " + HexCode(mask);
}

std::string Hex(std::span<const uint8_t> bytes) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string text;
  for (const uint8_t byte : bytes) {
    if (!text.empty()) text += ' ';
    text += kDigits[byte >> 4U];
    text += kDigits[byte & 0xFU];
  }
  return text;
}

std::string HexCode(uint32_t code) {
  std::array<char, 16> text{};
  std::snprintf(text.data(), text.size(), "0x%X", static_cast<unsigned>(code));
  return text.data();
}

}  // namespace nuvelta::support
