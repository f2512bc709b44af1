// What the notebook answered the worker in one run of the task: no more of it than the
// rules of run_truth.h ask for.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/mobile_broadband.h"

namespace nuvelta::explore {

// An entry of the network class key, as far as its values could be read.
struct AdapterKey {
  std::optional<std::string> adapter{};  // the name of the adapter that it belongs to
  std::optional<std::string> device{};   // its device instance id
};

struct FirmwareReading {
  uint32_t size = 0;
  bool memory = false;  // there was memory for the table
  uint32_t written = 0;

  bool IsWhole() const { return memory && size != 0 && written == size; }
};

// One visit to the mobile-broadband interface, from the question for a modem on.
struct ModemVisit {
  bool modem = false;
  bool raised = false;  // a call threw, or answered null where an object has to be used
  bool vendor_listed = false;
  bool service = false;
  bool session = false;
  // The command's end, as far as it had come when the service stopped waiting.
  platform::AsyncStatus end = platform::AsyncStatus::kStarted;
  std::optional<uint32_t> status{};
  std::optional<int32_t> level{};
};

struct RunAnswers {
  bool adapter_memory = false;  // for the list of the adapters
  bool adapters_read = false;
  std::optional<std::string> adapter{};  // the first of mobile broadband
  std::vector<AdapterKey> adapter_keys{};
  std::optional<uint8_t> support_verify{};  // the switches' first bytes, when usable
  std::optional<uint8_t> disable_verify{};
  std::vector<FirmwareReading> firmware{};
  bool devices_read = false;
  std::vector<std::string> device_ids{};  // a text that was not converted is empty
  std::vector<ModemVisit> visits{};       // the modem's presence, the query, the set command

  // What the next block of memory and the next converted text are for.
  enum class MemoryFor : uint8_t { kOther, kAdapters, kFirmware };
  enum class TextFor : uint8_t { kOther, kDevice, kVendorService };
  MemoryFor memory_for = MemoryFor::kOther;
  TextFor text_for = TextFor::kOther;
};

}  // namespace nuvelta::explore
