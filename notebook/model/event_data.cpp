#include "notebook/model/event_data.h"

#include <cstring>

#include "notebook/model/unicode.h"
#include "platform/service_control.h"

namespace nuvelta::virtual_notebook {

namespace {

constexpr uint32_t kHeaderSize = 56;  // sizeof(EVENTLOGRECORD)

void Put(std::vector<uint8_t>& bytes, size_t offset, uint32_t value, int width) {
  for (int i = 0; i < width; ++i) {
    bytes[offset + static_cast<size_t>(i)] = static_cast<uint8_t>(value >> (8 * i));
  }
}

template <class Struct>
std::vector<uint8_t> BytesOf(const Struct& value, size_t size) {
  std::vector<uint8_t> bytes(size);
  std::memcpy(bytes.data(), &value, size);
  return bytes;
}

}  // namespace

std::string ModemInterface(const ModemDescription& modem) {
  std::string path = modem.instance_id;
  for (char& letter : path) {
    if (letter == '\\') letter = '#';
  }
  return "\\\\?\\" + path + "#{cac88484-7515-4c03-82e6-71a87abac361}";
}

std::vector<uint8_t> DeviceEventData(const std::string& interface_name) {
  constexpr size_t kNameOffset = 28;
  const std::vector<uint8_t> name = Utf16Bytes(interface_name, 1);
  platform::DeviceInterfaceBroadcast header;
  header.dbcc_size = static_cast<uint32_t>(kNameOffset + name.size());
  header.dbcc_devicetype = platform::kDbtDevTypDeviceInterface;
  header.dbcc_classguid = platform::kGuidDevInterfaceNet;
  std::vector<uint8_t> data = BytesOf(header, kNameOffset);
  data.insert(data.end(), name.begin(), name.end());
  return data;
}

std::vector<uint8_t> PowerSettingData(const platform::Guid& setting, uint32_t data) {
  platform::PowerBroadcastSetting event;
  event.PowerSetting = setting;
  event.DataLength = sizeof data;
  std::memcpy(event.Data.data(), &data, sizeof data);
  return BytesOf(event, sizeof event);
}

std::vector<uint8_t> EventRecordBytes(const EventRecord& record, uint32_t number,
                                      uint32_t seconds) {
  if (record.raw) return *record.raw;
  std::vector<uint8_t> bytes(kHeaderSize);
  for (const std::string& text : {record.source, std::string("NOTEBOOK")}) {
    const std::vector<uint8_t> wide = Utf16Bytes(text, 1);
    bytes.insert(bytes.end(), wide.begin(), wide.end());
  }
  const auto texts_end = static_cast<uint32_t>(bytes.size());
  bytes.resize((bytes.size() + 3) / 4 * 4 + 4);
  const auto length = static_cast<uint32_t>(bytes.size());
  Put(bytes, 0, length, 4);
  Put(bytes, 4, 0x654C664C, 4);  // "LfLe"
  Put(bytes, 8, number, 4);
  Put(bytes, 12, seconds, 4);  // TimeGenerated
  Put(bytes, 16, seconds, 4);  // TimeWritten
  Put(bytes, 20, record.event_id, 4);
  Put(bytes, 24, record.type, 2);
  Put(bytes, 28, record.category, 2);
  Put(bytes, 36, texts_end, 4);  // StringOffset
  Put(bytes, 44, texts_end, 4);  // UserSidOffset
  Put(bytes, 52, texts_end, 4);  // DataOffset
  Put(bytes, length - 4, length, 4);
  return bytes;
}

RecordsRead ReadBackwards(std::span<const std::vector<uint8_t>> records, size_t& unread,
                          std::span<std::byte> buffer) {
  size_t used = 0;
  size_t needed = 0;
  for (; unread > 0; --unread) {
    const std::vector<uint8_t>& record = records[unread - 1];
    if (used + record.size() > buffer.size()) {
      needed = record.size();
      break;
    }
    if (!record.empty()) std::memcpy(buffer.data() + used, record.data(), record.size());
    used += record.size();
  }
  if (used != 0) return {.read = static_cast<uint32_t>(used)};
  return {.error = needed != 0 ? platform::kErrorInsufficientBuffer : platform::kErrorHandleEof,
          .needed = static_cast<uint32_t>(needed)};
}

}  // namespace nuvelta::virtual_notebook
