#include "auth/platform_table.h"

#include <algorithm>

#include "common/text_util.h"

namespace nuvelta {

namespace {

constexpr std::array<std::string_view, 2> kModems{"USB\\VID_3A5E&PID_4A10",
                                                  "USB\\VID_3A5E&PID_4A11"};
constexpr std::span<const std::string_view> kBothModems{kModems};
constexpr std::span<const std::string_view> kFirstModem = kBothModems.first(1);
constexpr size_t kMachineTypeLength = 4;

}  // namespace

// The spellings are the firmware's, that of "T14s Gen5" without a blank too.
constexpr std::array<PlatformEntry, kPlatformCount> platform_modem_map{{
    {"ThinkPad L13 Gen 5", kBothModems},
    {"ThinkPad L13 2-in-1 Gen 5", kBothModems},
    {"ThinkPad L14 Gen 5", kBothModems},
    {"ThinkPad L16 Gen 1", kBothModems},
    {"ThinkPad S2 Gen 9", kBothModems},
    {"ThinkPad X13 Gen 5", kBothModems},
    {"ThinkPad X13 2-in-1 Gen 5", kBothModems},
    {"ThinkPad T14 Gen 5", kFirstModem},
    {"ThinkPad T16 Gen 3", kBothModems},
    {"ThinkPad T14s Gen5", kBothModems},
    {"ThinkPad T14 Gen 5 AMD", kFirstModem},
    {"ThinkPad T16 Gen 4_21QE", kFirstModem},
    {"ThinkPad T16 Gen 4_21QF", kFirstModem},
    {"ThinkPad T16 Gen 4_21QN", kFirstModem},
    {"ThinkPad T16 Gen 4_21QQ", kFirstModem},
    {"ThinkPad T16 Gen 4_22AW", kFirstModem},
    {"ThinkPad T16 Gen 4_22AX", kFirstModem},
    {"ThinkPad T14s Gen 6_21R1", kFirstModem},
    {"ThinkPad T14s Gen 6_21R2", kFirstModem},
    {"ThinkPad T14s Gen 6_21TB", kFirstModem},
    {"ThinkPad T14s Gen 6_21TC", kFirstModem},
    {"ThinkPad T14s Gen 6_21QX", kFirstModem},
    {"ThinkPad T14s Gen 6_21QY", kFirstModem},
    {"ThinkPad T14s 2-in-1 Gen 1_21R3", kFirstModem},
    {"ThinkPad T14s 2-in-1 Gen 1_21R4", kFirstModem},
    {"ThinkPad X13 Gen 6_21RK", kFirstModem},
    {"ThinkPad X13 Gen 6_21RL", kFirstModem},
    {"ThinkPad X13 Gen 6_21RM", kFirstModem},
    {"ThinkPad X13 Gen 6_21RN", kFirstModem},
    {"ThinkPad T14 Gen 6_21QC", kFirstModem},
    {"ThinkPad T14 Gen 6_21QD", kFirstModem},
    {"ThinkPad T14 Gen 6_21QJ", kFirstModem},
    {"ThinkPad T14 Gen 6_21QK", kFirstModem},
    {"ThinkPad T14 Gen 6_21QG", kFirstModem},
    {"ThinkPad T14 Gen 6_21QH", kFirstModem},
    {"ThinkPad L13 Gen 6_21RB", kFirstModem},
    {"ThinkPad L13 Gen 6_21RC", kFirstModem},
    {"ThinkPad L13 2-in-1 Gen 6_21RD", kFirstModem},
    {"ThinkPad L13 2-in-1 Gen 6_21RE", kFirstModem},
    {"ThinkPad L13 Gen 6_21R5", kFirstModem},
    {"ThinkPad L13 Gen 6_21R6", kFirstModem},
    {"ThinkPad L13 2-in-1 Gen 6_21R7", kFirstModem},
    {"ThinkPad L13 2-in-1 Gen 6_21R8", kFirstModem},
    {"ThinkPad L14 Gen 6_21S6", kFirstModem},
    {"ThinkPad L14 Gen 6_21S7", kFirstModem},
    {"ThinkPad L14 Gen 6_21S8", kFirstModem},
    {"ThinkPad L14 Gen 6_21S9", kFirstModem},
    {"ThinkPad L14 Gen 6_21SE", kFirstModem},
    {"ThinkPad L14 Gen 6_21SF", kFirstModem},
    {"ThinkPad L16 Gen 2_21SA", kFirstModem},
    {"ThinkPad L16 Gen 2_21SB", kFirstModem},
    {"ThinkPad L16 Gen 2_21SC", kFirstModem},
    {"ThinkPad L16 Gen 2_21SD", kFirstModem},
    {"ThinkPad L16 Gen 2_21RH", kFirstModem},
    {"ThinkPad L16 Gen 2_21RJ", kFirstModem},
}};

bool IsCs24ProjectName(std::string_view project) {
  return std::ranges::any_of(std::span(platform_modem_map).first(kCs24Count),
                             [&](const PlatformEntry& entry) { return entry.key == project; });
}

std::string Cs25PlatformKey(std::string_view project, std::string_view baseboard_product) {
  std::string key(project);
  key += '_';
  for (const char letter : baseboard_product.substr(0, kMachineTypeLength)) key += ToUpper(letter);
  return key;
}

bool IsListedPlatform(std::string_view key) {
  return std::ranges::any_of(platform_modem_map, [&](const PlatformEntry& entry) {
    return EqualIgnoreCase(entry.key, key);
  });
}

bool IsAllowedModem(std::string_view key, std::string_view hwid) {
  return std::ranges::any_of(platform_modem_map, [&](const PlatformEntry& entry) {
    return EqualIgnoreCase(entry.key, key) &&
           std::ranges::any_of(entry.hwids, [&](std::string_view allowed) {
             return EqualIgnoreCase(allowed, hwid);
           });
  });
}

}  // namespace nuvelta
