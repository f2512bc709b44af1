// What the construction of a Systeminfo allocates, beside what its texts and the
// table need. The heap and the firmware table are plain ones here, so that every
// allocation counted is the service's own.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <new>
#include <vector>

#include "auth/systeminfo.h"
#include "bench_support.h"
#include "counted_new.h"
#include "plain_firmware.h"
#include "platform/memory.h"
#include "platform/platform.h"

namespace nuvelta::bench {
namespace {

class CountedHeap final : public platform::Memory {
 public:
  void* HeapAlloc(size_t bytes) override { return ::operator new(bytes); }
  void HeapFree(void* block) noexcept override { ::operator delete(block); }
  void* LocalAlloc(size_t /*bytes*/) override { return nullptr; }
  void LocalFree(void* /*block*/) noexcept override {}
};

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
    const platform::Platform& os = platform::Os();
    platform::Platform with_plain_heap = os;
    with_plain_heap.firmware = &firmware;
    with_plain_heap.memory = &heap;
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
