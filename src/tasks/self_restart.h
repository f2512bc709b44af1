// The restart of the service from outside.
#pragma once

#include <cstdint>
#include <span>

namespace nuvelta::CommonUtil {

// Finds the service that runs in this process: its key name, NUL-terminated
// and cut to `name`, and its process id. Returns 1 when found, 0 otherwise.
uint32_t GetServiceName(std::span<char> name, uint32_t& processId);

// Launches an elevated command interpreter that kills this process and starts
// the service again. Returns 1 when it was launched, 0 otherwise.
uint32_t RestartService();

}  // namespace nuvelta::CommonUtil
