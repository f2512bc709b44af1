// What the construction of a Systeminfo allocates, beside what its texts and the
// table need. The heap and the firmware table are plain ones here, so that every
// allocation counted is the service's own.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>
#include <new>
#include <vector>

#include "auth/systeminfo.h"
#include "bench_support.h"
#include "counted_new.h"
#include "platform/firmware.h"
#include "platform/memory.h"
#include "platform/platform.h"
#include "platform/virtual/smbios_builder.h"

namespace nuvelta::bench {
namespace {

class CountedHeap final : public platform::Memory {
 public:
  void* HeapAlloc(size_t bytes) override { return ::operator new(bytes); }
  void HeapFree(void* block) noexcept override { ::operator delete(block); }
  void* LocalAlloc(size_t /*bytes*/) override { return nullptr; }
  void LocalFree(void* /*block*/) noexcept override {}
};

class PlainFirmware final : public platform::Firmware {
 public:
  explicit PlainFirmware(std::vector<uint8_t> table) : m_table(std::move(table)) {}
  uint32_t GetSystemFirmwareTable(uint32_t /*provider*/, uint32_t /*id*/, std::byte* buffer,
                                  uint32_t size) override {
    if (size >= m_table.size()) std::memcpy(buffer, m_table.data(), m_table.size());
    return static_cast<uint32_t>(m_table.size());
  }

 private:
  const std::vector<uint8_t> m_table;
};

// A table of 4 KiB: what a notebook has, then memory structures up to the size.
std::vector<uint8_t> FourKilobytes() {
  constexpr size_t kSize = 4096;
  std::vector<uint8_t> table = virtual_notebook::BuildSmbiosTable({});
  constexpr uint8_t kMemoryDevice[] = {17, 8, 0, 1, 0, 0, 0, 0, 'D', 'I', 'M', 'M', 0, 0};
  while (table.size() + sizeof kMemoryDevice <= kSize) {
    table.insert(table.end(), std::begin(kMemoryDevice), std::end(kMemoryDevice));
  }
  const size_t length = table.size() - 8;
  for (size_t i = 0; i < 4; ++i) table[4 + i] = static_cast<uint8_t>(length >> (8 * i));
  return table;
}

// Texts that do not fit into the string object itself need one block each.
void AddText(const std::string& text, size_t& blocks, size_t& bytes) {
  if (text.capacity() <= std::string().capacity()) return;
  ++blocks;
  bytes += text.capacity() + 1;
}

void SysteminfoAllocations(benchmark::State& state) {
  RunInProcess([&] {
    CountedHeap heap;
    PlainFirmware firmware(FourKilobytes());
    platform::Platform& os = platform::Os();
    platform::Platform with_plain_heap{
        os.clock,           os.devices,  os.environment,        os.event_log, os.files,
        firmware,           heap,        os.mobile_broadband,   os.network,   os.registry,
        os.service_control, os.sessions, os.system_information, os.text,      os.threads};
    platform::Install(&with_plain_heap);
    size_t blocks = 1;  // the table's buffer
    size_t bytes = 0;
    Allocations counted;
    for (auto _ : state) {
      StartCounting();
      const Systeminfo info;
      counted = StopCounting();
      bytes = firmware.GetSystemFirmwareTable(0, 0, nullptr, 0);
      blocks = 1;
      for (const std::string* text :
           {&info.family_, &info.manufacturer_, &info.productname_, &info.serialnumber_, &info.sku_,
            &info.uuid_, &info.project_name_, &info.processor_manufacturer_,
            &info.baseboard_manufacturer_, &info.baseboard_product_, &info.baseboard_version_,
            &info.baseboard_serialnumber_, &info.baseboard_asset_tag_}) {
        AddText(*text, blocks, bytes);
      }
    }
    platform::Install(&os);
    state.counters["allocations"] = static_cast<double>(counted.blocks);
    state.counters["needed"] = static_cast<double>(blocks);
    state.counters["bytes"] = static_cast<double>(counted.bytes);
    state.counters["bytes_needed"] = static_cast<double>(bytes);
  });
}
BENCHMARK(SysteminfoAllocations);

}  // namespace
}  // namespace nuvelta::bench
