// The platforms for which the modem is approved.
#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <string>
#include <string_view>

namespace nuvelta {

struct PlatformEntry {
  std::string_view key;
  std::span<const std::string_view> hwids;  // the allowed modems
};

inline constexpr size_t kPlatformCount = 55;
inline constexpr size_t kCs24Count = 11;  // the first entries, keyed by name alone

extern const std::array<PlatformEntry, kPlatformCount> platform_modem_map;

// True for the name of a CS24 project. [fixed] Letter case counts here, unlike in the two
// look-ups below.
bool IsCs24ProjectName(std::string_view project);

// The key of a newer platform: its name, an underscore and the machine type, the
// first four characters of the baseboard product in upper case.
std::string Cs25PlatformKey(std::string_view project, std::string_view baseboard_product);

bool IsListedPlatform(std::string_view key);
// True when an entry with this key allows the hardware id.
bool IsAllowedModem(std::string_view key, std::string_view hwid);

}  // namespace nuvelta
