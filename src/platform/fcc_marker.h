// The marker by which the platform's firmware declares FCC mode: a small binary
// byte, then 14 upper-case letters. Platform data, supplied by the firmware's
// maker through the CMake cache variable NUVELTA_FCC_MARKER (30 hexadecimal
// digits); the default is a placeholder that no firmware carries.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#ifndef NUVELTA_FCC_MARKER
#error "NUVELTA_FCC_MARKER must hold the marker as 30 hexadecimal digits"
#endif

namespace nuvelta::platform {

inline constexpr size_t kFccMarkerSize = 15;

consteval std::array<uint8_t, kFccMarkerSize> ParseFccMarker(std::string_view hex) {
  const auto digit = [](char c) -> unsigned {
    if (c >= '0' && c <= '9') return static_cast<unsigned>(c - '0');
    if (c >= 'A' && c <= 'F') return static_cast<unsigned>(c - 'A' + 10);
    if (c >= 'a' && c <= 'f') return static_cast<unsigned>(c - 'a' + 10);
    throw "not a hexadecimal digit";
  };
  if (hex.size() != 2 * kFccMarkerSize) throw "the marker has 15 bytes";
  std::array<uint8_t, kFccMarkerSize> marker{};
  for (size_t i = 0; i < marker.size(); ++i) {
    marker[i] = static_cast<uint8_t>(digit(hex[2 * i]) * 16 + digit(hex[2 * i + 1]));
  }
  return marker;
}

inline constexpr std::array<uint8_t, kFccMarkerSize> kFccMarker =
    ParseFccMarker(NUVELTA_FCC_MARKER);

}  // namespace nuvelta::platform
