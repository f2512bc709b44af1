// Records of an event log as bytes, EVENTLOGRECORD.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "support/capture/captured_notebook.h"

namespace nuvelta::support {

// Of the record at the front; none when the bytes are no record.
std::optional<size_t> RecordLength(std::span<const uint8_t> bytes);
// Whether the service takes it for a logon.
bool IsLogon(const Bytes& record);
// The computer that wrote it, in UTF-8; empty when it is no whole record.
std::string ComputerOf(const Bytes& record);
// Clears what nobody reads and what may tell of people: the texts' letters and digits, the
// account's identifier, the data. The length stays.
void ClearTexts(Bytes& record);

}  // namespace nuvelta::support
