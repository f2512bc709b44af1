// The names of the service's log files.
#pragma once

#include <array>
#include <ctime>
#include <string>

namespace nuvelta::virtual_notebook {

// Stands between the logger's prefix and the stamp.
inline constexpr const char* kLogProgram = "HX2208GW_";

// The local time at which a file was begun, as "2026-11-16_00.58.46".
inline std::string LogStampOf(const std::tm& begun) {
  std::array<char, 32> stamp{};
  std::strftime(stamp.data(), stamp.size(), "%Y-%m-%d_%H.%M.%S", &begun);
  return stamp.data();
}

// The name of a file that the logger began at that time.
inline std::string LogNameOf(std::string prefix, const std::tm& begun, const std::string& suffix) {
  return prefix.append(kLogProgram).append(LogStampOf(begun)).append(suffix);
}

}  // namespace nuvelta::virtual_notebook
