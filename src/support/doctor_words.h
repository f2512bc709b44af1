// Names of the system's numbers, as the doctor prints them.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "support/diagnosis.h"

namespace nuvelta::support {

const char* ServiceStateName(uint32_t state);
const char* StartTypeName(uint32_t type);
const char* ActionName(uint32_t type);
const char* RegistryTypeName(uint32_t type);
const char* AdapterStateName(uint32_t state);
const char* StepStateName(StepState state);
// "completed", "canceled", "error"; of a query without an end "no answer".
const char* QueryStateName(const QueryRecord& query);

// "full control", "modify", "read and execute", "read", or the mask in hexadecimal.
std::string AccessName(uint32_t mask);
// "04 00 00 00".
std::string Hex(std::span<const uint8_t> bytes);
// "0x80070005".
std::string HexCode(uint32_t code);

}  // namespace nuvelta::support
