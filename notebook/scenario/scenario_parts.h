// The readers of a scenario's parts. Each throws ScenarioError.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "notebook/model/scenario.h"
#include "notebook/scenario/json_cursor.h"

namespace nuvelta::virtual_notebook {

// A year: no story is longer.
inline constexpr int64_t kLongestStory = 366LL * 24 * 3600;
inline constexpr int64_t kLongestPauseMs = 24LL * 3600 * 1000;

// Reads a file of at most `most` bytes. Nothing when that cannot be done; then `why`
// tells what is wrong with it.
std::optional<std::string> ReadWholeFile(const std::string& path, size_t most, std::string& why);

// Reads a file that a scenario names, in the scenario's folder or below it.
std::string ReadRawFile(const JsonCursor& at, const std::string& folder, size_t most);
// `folder` is where raw files lie.
Notebook ReadNotebook(const JsonCursor& at, const std::string& folder);
void ReadFirmware(const JsonCursor& at, const std::string& folder, Notebook& notebook);
RegistryValue ReadRegistryValue(const JsonCursor& at);
// A key path below HKEY_LOCAL_MACHINE; refused at `at` when it is none.
void CheckRegistryKey(const JsonCursor& at, const std::string& path);

ModemDescription ReadModem(const JsonCursor& at);
std::vector<platform::Guid> ReadDeviceServices(const JsonCursor& at);
std::vector<Answer> ReadAnswers(const JsonCursor& at);

// Reads the members of a record, which `keys` of the object must include:
// "source", "type", "event_id", "category", or "raw_hex" in their place.
void ReadRecordMembers(const JsonObject& object, EventRecord& record);

// The events in order of time; none when `at` is absent. A story without a start
// begins with one.
std::vector<Event> ReadEvents(const std::optional<JsonCursor>& at);
std::vector<Fault> ReadFaults(const JsonCursor& at);
std::vector<Delay> ReadDelays(const JsonCursor& at);

}  // namespace nuvelta::virtual_notebook
