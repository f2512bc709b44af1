// What a firmware table says, told once more: by positions in the table as a
// text and by searches in it, unlike the code under test.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "target.h"

namespace nuvelta::fuzz {

class SmbiosReference {
 public:
  // A table with its 8-byte header.
  explicit SmbiosReference(Bytes table);

  struct Found {
    size_t at = 0;  // in the whole table
    uint8_t type = 0;
    uint8_t length = 0;
  };
  std::optional<Found> First(uint8_t type, uint8_t least) const;
  std::string Text(const Found& structure, uint8_t number) const;
  // The text whose number stands at `offset`; empty without a structure.
  std::string Field(const std::optional<Found>& structure, size_t offset) const;
  std::string Uuid(const std::optional<Found>& structure) const;

  // The data byte and strings of the structure that declares FCC mode; none when
  // there is none, or it does not end.
  std::optional<std::string> FccContent() const;
  bool IsFcc() const;

  size_t End() const { return m_end; }
  uint8_t Byte(size_t at) const {
    return at < m_all.size() ? static_cast<uint8_t>(m_all[at]) : uint8_t{0};
  }

 private:
  std::string m_all;       // with two zeros behind it, so that searches come to an end
  size_t m_delivered = 0;  // bytes without those
  size_t m_end = 0;        // of the structures
  std::vector<Found> m_structures;
};

}  // namespace nuvelta::fuzz
