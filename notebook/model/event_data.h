// What the operating system hands to a service with an event, as bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "notebook/model/scenario.h"
#include "platform/types.h"

namespace nuvelta::virtual_notebook {

// The path by which the modem's network interface is announced.
std::string ModemInterface(const ModemDescription& modem);

// DEV_BROADCAST_DEVICEINTERFACE_W of a network adapter's interface.
std::vector<uint8_t> DeviceEventData(const std::string& interface_name);

// The event type of a power setting.
inline constexpr uint32_t kPowerSettingChange = 0x8013;  // PBT_POWERSETTINGCHANGE
// POWERBROADCAST_SETTING with one 32-bit word of data.
std::vector<uint8_t> PowerSettingData(const platform::Guid& setting, uint32_t data);

// EVENTLOGRECORD with its texts and the length again behind them; the bytes that
// the record gives instead when it does. `number` counts from 1, `seconds` since
// 1970.
std::vector<uint8_t> EventRecordBytes(const EventRecord& record, uint32_t number, uint32_t seconds);

// What one reading of a log backwards answers, as ReadEventLogW does.
struct RecordsRead {
  uint32_t error = platform::kErrorSuccess;
  uint32_t read = 0;
  uint32_t needed = 0;
};
// Whole records, newest first, as many as fit. The oldest `unread` of `records`, which
// stand in order of writing, have not been read yet; it goes down with each that is.
RecordsRead ReadBackwards(std::span<const std::vector<uint8_t>> records, size_t& unread,
                          std::span<std::byte> buffer);

}  // namespace nuvelta::virtual_notebook
