// The raw SMBIOS table. Everything here accepts any bytes: what lies outside the
// table reads as zero.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace nuvelta {

class SmbiosTable {
 public:
  // A table as the firmware port delivers it: an 8-byte header, then structures.
  // The bytes must outlive the object.
  explicit SmbiosTable(std::span<const std::byte> table);

  uint8_t Used20CallingMethod = 0;
  uint8_t SMBIOSMajorVersion = 0;
  uint8_t SMBIOSMinorVersion = 0;
  uint8_t DmiRevision = 0;
  uint32_t Length = 0;  // bytes of structures, as the header claims

  // Offsets count from the first structure.

  // The end of the structures: `Length`, or less when the table is cut short.
  size_t End() const { return m_end; }
  // All bytes that were delivered; a content that begins before the end may pass it.
  size_t Size() const { return m_bytes.size(); }
  uint8_t At(size_t offset) const;
  // True at two zero bytes, which end a structure.
  bool IsDoubleZero(size_t offset) const { return At(offset) == 0 && At(offset + 1) == 0; }
  // At most `count` bytes from `offset` on, fewer at the end of the bytes.
  std::span<const std::byte> Bytes(size_t offset, size_t count) const;
  // The text at `offset`, up to its NUL or the end of the table.
  std::string_view Text(size_t offset) const;

 private:
  std::span<const std::byte> m_bytes;  // all that follows the header
  size_t m_end = 0;
};

struct SmbiosStructure {
  size_t offset = 0;
  uint8_t type = 0;
  uint8_t length = 0;  // of the formatted area
};

// The first structure of `type` with a formatted area of at least `min_length`
// bytes. A structure shorter than its own header ends the search.
std::optional<SmbiosStructure> FindStructure(const SmbiosTable& table, uint8_t type,
                                             uint8_t min_length);

// The string with the 1-based `number`; empty for 0 and for a structure without
// strings. A number past the set takes what follows the set.
std::string_view ResolveString(const SmbiosTable& table, const SmbiosStructure& structure,
                               uint8_t number);

// What the structure that declares FCC mode carries: its data byte and strings.
struct FccContent {
  size_t offset = 0;
  size_t length = 0;    // up to the closing double zero, or the end of the bytes without one
  bool closed = false;  // the double zero is there
};

// The content of the first structure of type 133, provided that its formatted
// area has 5 bytes; a later one does not count.
std::optional<FccContent> FindFccContent(const SmbiosTable& table);

// True when the content is closed, exactly as long as the marker, and equal to
// it but for letter case; the last byte of the marker is not compared.
bool IsFccContent(const SmbiosTable& table, const FccContent& content,
                  std::span<const uint8_t> marker);

}  // namespace nuvelta
