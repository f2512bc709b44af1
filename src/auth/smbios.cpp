#include "auth/smbios.h"

#include <algorithm>

#include "common/text_util.h"

namespace nuvelta {

namespace {

constexpr size_t kTableHeaderSize = 8;
constexpr uint8_t kStructureHeaderSize = 4;
constexpr uint8_t kFccType = 133;
constexpr uint8_t kFccLength = 5;
constexpr size_t kFccDataOffset = 4;

uint8_t ByteAt(std::span<const std::byte> bytes, size_t offset) {
  return offset < bytes.size() ? std::to_integer<uint8_t>(bytes[offset]) : uint8_t{0};
}

SmbiosStructure StructureAt(const SmbiosTable& table, size_t offset) {
  return {.offset = offset, .type = table.At(offset), .length = table.At(offset + 1)};
}

// Where the structure after this one begins; at or past the end after the last.
size_t NextOffset(const SmbiosTable& table, const SmbiosStructure& structure) {
  size_t offset = structure.offset + structure.length;
  while (offset < table.End() && !table.IsDoubleZero(offset)) ++offset;
  return offset + 2;
}

}  // namespace

SmbiosTable::SmbiosTable(std::span<const std::byte> table)
    : Used20CallingMethod(ByteAt(table, 0)),
      SMBIOSMajorVersion(ByteAt(table, 1)),
      SMBIOSMinorVersion(ByteAt(table, 2)),
      DmiRevision(ByteAt(table, 3)),
      m_bytes(table.subspan(std::min(table.size(), kTableHeaderSize))) {
  for (size_t offset = kTableHeaderSize; offset-- > 4;)
    Length = Length << 8U | ByteAt(table, offset);
  m_end = std::min<size_t>(Length, m_bytes.size());
}

uint8_t SmbiosTable::At(size_t offset) const { return ByteAt(m_bytes, offset); }

std::span<const std::byte> SmbiosTable::Bytes(size_t offset, size_t count) const {
  if (offset >= m_bytes.size()) return {};
  return m_bytes.subspan(offset, std::min(count, m_bytes.size() - offset));
}

std::string_view SmbiosTable::Text(size_t offset) const {
  if (offset >= m_bytes.size()) return {};
  size_t end = offset;
  while (end < m_bytes.size() && At(end) != 0) ++end;
  return {reinterpret_cast<const char*>(m_bytes.data()) + offset, end - offset};
}

std::optional<SmbiosStructure> FindStructure(const SmbiosTable& table, uint8_t type,
                                             uint8_t min_length) {
  for (size_t offset = 0; offset < table.End();) {
    const SmbiosStructure structure = StructureAt(table, offset);
    if (structure.length < kStructureHeaderSize) break;
    if (structure.type == type && structure.length >= min_length) return structure;
    offset = NextOffset(table, structure);
  }
  return std::nullopt;
}

std::string_view ResolveString(const SmbiosTable& table, const SmbiosStructure& structure,
                               uint8_t number) {
  size_t offset = structure.offset + structure.length;
  if (number == 0 || table.At(offset) == 0) return {};
  // [fixed] not held against the count of strings in the set.
  for (uint8_t skipped = 1; skipped < number; ++skipped) offset += table.Text(offset).size() + 1;
  return table.Text(offset);
}

std::optional<FccContent> FindFccContent(const SmbiosTable& table) {
  for (size_t offset = 0; offset < table.End();) {
    const SmbiosStructure structure = StructureAt(table, offset);
    // [fixed] a later one does not count when the first has another length.
    if (structure.type != kFccType) {
      offset = NextOffset(table, structure);
      continue;
    }
    if (structure.length != kFccLength) break;
    const size_t first = structure.offset + kFccDataOffset;
    size_t last = first;
    while (last + 1 < table.Size() && !table.IsDoubleZero(last)) ++last;
    const bool closed = last + 1 < table.Size();
    if (!closed) last = std::max(first, table.Size());
    return FccContent{.offset = first, .length = last - first, .closed = closed};
  }
  return std::nullopt;
}

bool IsFccContent(const SmbiosTable& table, const FccContent& content,
                  std::span<const uint8_t> marker) {
  if (!content.closed || content.length != marker.size()) return false;
  // [fixed] the last byte of the marker is not compared.
  for (size_t index = 0; index + 1 < marker.size(); ++index) {
    const char left = ToLower(static_cast<char>(table.At(content.offset + index)));
    const char right = ToLower(static_cast<char>(marker[index]));
    if (left != right) return false;
    // As a comparison of texts: it ends where both do.
    if (left == '\0') break;
  }
  return true;
}

}  // namespace nuvelta
