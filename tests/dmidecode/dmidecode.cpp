#include "dmidecode.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <stdexcept>

#include "notebook/story/temporary_folder.h"

namespace nuvelta::test {

namespace {

constexpr size_t kHeader = 8;
constexpr size_t kEntrySize = 0x20;

// The package installs it where only root looks.
constexpr const char* kSearchPath = "PATH=\"$PATH:/usr/sbin:/sbin\" ";

void PutChecksum(std::string& bytes, size_t at, size_t begin, size_t count) {
  uint8_t sum = 0;
  for (size_t i = begin; i < begin + count; ++i) sum = static_cast<uint8_t>(sum + bytes[i]);
  bytes[at] = static_cast<char>(-sum);
}

// The SMBIOS 2.1 entry point, for it alone lets dmidecode read on behind an
// end-of-table structure: a count of 0 structures means as many as there are.
std::string EntryPoint(uint8_t major, uint8_t minor, size_t length) {
  std::string entry(kEntrySize, '\0');
  entry.replace(0, 4, "_SM_");
  entry[0x05] = 0x1F;
  entry[0x06] = static_cast<char>(major);
  entry[0x07] = static_cast<char>(minor);
  entry.replace(0x10, 5, "_DMI_");
  entry[0x16] = static_cast<char>(length);
  entry[0x17] = static_cast<char>(length >> 8U);
  entry[0x18] = kEntrySize;  // where the table lies in the file
  PutChecksum(entry, 0x15, 0x10, 0x0F);
  PutChecksum(entry, 0x04, 0, 0x1F);
  return entry;
}

std::string Output(const std::string& command) {
  const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), pclose);
  if (!pipe) throw std::runtime_error("cannot run: " + command);
  std::string text;
  std::array<char, 4096> buffer;
  for (size_t count = 0; (count = fread(buffer.data(), 1, buffer.size(), pipe.get())) > 0;) {
    text.append(buffer.data(), count);
  }
  return text;
}

// The lines of one structure begin with "Handle 0x0001, DMI type 1, 27 bytes". A
// list has its name on one line, then an item a line, with a tab more.
DmiOutput Parse(const std::string& text) {
  DmiOutput output;
  std::istringstream lines(text);
  std::string list;
  for (std::string line; std::getline(lines, line);) {
    DmiBlock block;
    unsigned handle = 0;
    if (std::sscanf(line.c_str(), "Handle 0x%x, DMI type %d, %d bytes", &handle, &block.type,
                    &block.length) == 3) {
      output.blocks.push_back(block);
    }
    if (line.find("structures occupy") != std::string::npos) output.whole = false;
    if (line.starts_with("Invalid entry length")) output.stopped = true;
    if (output.blocks.empty()) continue;
    if (line.find("<TRUNCATED>") != std::string::npos) output.blocks.back().cut = true;
    if (line.starts_with("\t\t"))
      output.blocks.back().lists[list].push_back(line.substr(2));
    else if (line.starts_with('\t') && line.ends_with(':'))
      list = line.substr(1, line.size() - 2);
    const size_t colon = line.find(": ");
    if (line.starts_with('\t') && !line.starts_with("\t\t") && colon != std::string::npos) {
      output.blocks.back().fields.emplace(line.substr(1, colon - 1), line.substr(colon + 2));
    }
  }
  return output;
}

}  // namespace

const DmiBlock* DmiOutput::First(int type, int least) const {
  const auto found = std::ranges::find_if(
      blocks, [&](const DmiBlock& block) { return block.type == type && block.length >= least; });
  return found == blocks.end() ? nullptr : &*found;
}

bool HasDmidecode() {
  std::string command = kSearchPath;
  command += "command -v dmidecode";
  return Output(command).find('/') != std::string::npos;
}

DmiOutput RunDmidecode(std::span<const uint8_t> table) {
  static const story::TemporaryFolder folder;
  static const std::string path = (folder.Path() / "dump").string();
  const std::vector<uint8_t> bytes(table.begin(), table.end());
  const size_t length = std::min<size_t>(bytes.size() - kHeader, 0xFFFF);
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file << EntryPoint(bytes[1], bytes[2], length)
       << std::string(bytes.begin() + kHeader, bytes.end());
  file.close();
  const std::string text = Output(kSearchPath + ("dmidecode --from-dump " + path + " 2>&1"));
  if (text.find("present") == std::string::npos) throw std::runtime_error("dmidecode: " + text);
  return Parse(text);
}

}  // namespace nuvelta::test
