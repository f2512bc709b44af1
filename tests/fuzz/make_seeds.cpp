// Writes the seeds of the fuzz targets from the shipped scenarios:
// fuzz_seeds SCENARIOS SEEDS. The scenarios themselves are the scenario target's.
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>

#include "notebook/model/smbios_builder.h"
#include "notebook/model/unicode.h"
#include "notebook/scenario/scenario_reader.h"

namespace fs = std::filesystem;
using namespace nuvelta::virtual_notebook;

namespace {

using Bytes = std::string;

Bytes Sized(const Bytes& bytes) {
  return Bytes{static_cast<char>(bytes.size()), static_cast<char>(bytes.size() >> 8U)} + bytes;
}

Bytes Text(const std::vector<uint8_t>& bytes) { return {bytes.begin(), bytes.end()}; }

// An event record as the port has it: a header of 56 bytes, source, padding.
Bytes Record(const EventRecord& record) {
  Bytes bytes(56, '\0');
  bytes += Text(Utf16Bytes(record.source, 1));
  bytes.resize((bytes.size() + 3) / 4 * 4 + 4);
  bytes[0] = static_cast<char>(bytes.size());
  bytes[16] = 0x44;
  bytes[19] = 0x60;
  bytes[24] = static_cast<char>(record.type);
  return bytes;
}

Bytes HardwareIds(const Notebook& notebook) {
  const ModemDescription& modem = notebook.modem;
  const Bytes none("\0", 1);
  // One adapter, one key: it names the adapter, then the instance id.
  Bytes bytes = Sized(modem.instance_id) + none + '\1' + '\1' + Sized(modem.adapter_name) + '\1' +
                none + '\1' + Sized("") + none + Sized(modem.instance_id);
  bytes += none + static_cast<char>(notebook.devices.size() + 1);
  for (const Device& device : notebook.devices) bytes += '\2' + Sized(device.hardware_id);
  return bytes + '\2' + Sized(modem.hardware_id);
}

Bytes Settings(const Notebook& notebook) {
  Bytes bytes(2, '\0');
  for (const auto& [key, name] : {std::pair("Logs", "IsMAServiceLog"),
                                  {"MAService", "SupportVerifyPlatform"},
                                  {"MAService", "IsDisableVerify"}}) {
    const auto found =
        notebook.registry.find(std::string("SOFTWARE\\Nuvelta Wireless Inc\\") + key);
    const bool has = found != notebook.registry.end() && found->second.contains(name);
    bytes += Bytes("\0", 1) + Sized(has ? Text(found->second.at(name).data) : "");
  }
  return bytes;
}

// One message of each kind that the logger's target knows.
Bytes Message(size_t kind, const std::string& text, char times = 0) {
  const Bytes head("\x34\x12\0\0\x06\x50\x19\x6B\x20\0", 10);  // thread, moment, count
  const Bytes once("\0", 1);
  return head + static_cast<char>(kind) + '\2' + Bytes("\x2A\0\0\0", 4) + once +
         Sized("Seed::" + std::to_string(kind)) + times + Sized(text);
}

void Write(const fs::path& folder, const std::string& name, const Bytes& bytes,
           std::set<Bytes>& known) {
  // Scenarios that do not differ here give one seed.
  if (!known.insert(folder.string() + bytes).second) return;
  fs::create_directories(folder);
  std::ofstream(folder / name, std::ios::binary) << bytes;
}

// What no scenario shows: contents that differ in the byte that is not compared,
// tables that change while they are read, a message of 4096 characters.
void WriteOddities(const fs::path& seeds, std::set<Bytes>& known) {
  SmbiosFields fields = DefaultNotebook().firmware;
  const Bytes table = Text(BuildSmbiosTable(fields));
  for (const char mode : {'\1', '\2', '\3', '\x40'}) {
    Write(seeds / "systeminfo", "mode_" + std::to_string(mode), mode + table, known);
  }
  fields.fcc_content->back() ^= 0x11U;
  const Bytes other = Text(BuildSmbiosTable(fields));
  Write(seeds / "smbios", "fcc_last_byte", other, known);
  Write(seeds / "systeminfo", "fcc_last_byte", Bytes("\0", 1) + other, known);
  Write(seeds / "logger", "long_message", Message(7, Bytes(512, '%'), '\7'), known);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return std::fputs("usage: fuzz_seeds SCENARIOS SEEDS\n", stderr);
  const fs::path seeds = argv[2];
  std::set<fs::path> files(fs::directory_iterator(argv[1]), {});
  std::set<Bytes> known;
  WriteOddities(seeds, known);
  size_t message_kind = 0;
  for (const fs::path& file : files) {
    const Scenario scenario = ReadScenarioFile(file.string());
    const Notebook& notebook = scenario.notebook;
    const std::string name = file.stem().string();
    const Bytes table = Text(BuildSmbiosTable(notebook.firmware));
    Write(seeds / "smbios", name, table, known);
    Write(seeds / "systeminfo", name, Bytes("\0", 1) + table, known);
    Bytes records("\0\xFF", 2);
    for (const EventRecord& record : notebook.event_log) records += Record(record);
    Write(seeds / "logon_record", name, records, known);
    Write(seeds / "hardware_id", name, HardwareIds(notebook), known);
    Write(seeds / "settings", name, Settings(notebook), known);
    if (message_kind < 6) {
      Write(seeds / "logger", name, Message(message_kind++, scenario.title), known);
    }
  }
}
