#include "smbios_reference.h"

#include <strings.h>

#include <algorithm>
#include <cstdio>

#include "platform/fcc_marker.h"

namespace nuvelta::fuzz {

namespace {

constexpr size_t kHeader = 8;
constexpr std::string_view kDoubleZero("\0\0", 2);

}  // namespace

SmbiosReference::SmbiosReference(Bytes table) : m_all(Input::TextOf(table)) {
  const size_t claimed =
      size_t{Byte(4)} | size_t{Byte(5)} << 8U | size_t{Byte(6)} << 16U | size_t{Byte(7)} << 24U;
  m_end = kHeader + std::min(claimed, std::max(m_all.size(), kHeader) - kHeader);
  m_delivered = m_all.size();
  m_all += kDoubleZero;
  for (size_t at = kHeader; at < m_end;) {
    const uint8_t length = Byte(at + 1);
    m_structures.push_back({.at = at, .type = Byte(at), .length = length});
    const size_t zeros = m_all.find(kDoubleZero, at + length);
    if (zeros >= m_end) break;
    at = zeros + 2;
  }
}

std::optional<SmbiosReference::Found> SmbiosReference::First(uint8_t type, uint8_t least) const {
  for (const Found& structure : m_structures) {
    if (structure.length < 4) break;
    if (structure.type == type && structure.length >= least) return structure;
  }
  return std::nullopt;
}

std::string SmbiosReference::Text(const Found& structure, uint8_t number) const {
  size_t at = structure.at + structure.length;
  if (number == 0 || Byte(at) == 0) return {};
  while (--number > 0) {
    at = m_all.find('\0', at);
    if (at == std::string::npos) return {};
    ++at;
  }
  return at < m_all.size() ? m_all.substr(at, m_all.find('\0', at) - at) : std::string();
}

std::string SmbiosReference::Field(const std::optional<Found>& structure, size_t offset) const {
  return structure ? Text(*structure, Byte(structure->at + offset)) : std::string();
}

std::string SmbiosReference::Uuid(const std::optional<Found>& structure) const {
  if (!structure || structure->at + 0x18 > m_delivered) return {};
  std::string text;
  for (size_t i = 0; i < 16; ++i) {
    if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
    char digits[3];
    std::snprintf(digits, sizeof digits, "%02X", Byte(structure->at + 8 + i));
    text += digits;
  }
  return text;
}

std::optional<std::string> SmbiosReference::FccContent() const {
  const auto fcc = std::ranges::find(m_structures, 133, &Found::type);
  if (fcc == m_structures.end() || fcc->length != 5) return std::nullopt;
  const size_t zeros = m_all.find(kDoubleZero, fcc->at + 4);
  if (zeros == std::string::npos || zeros + 1 >= m_delivered) return std::nullopt;
  return m_all.substr(fcc->at + 4, zeros - (fcc->at + 4));
}

bool SmbiosReference::IsFcc() const {
  const auto content = FccContent();
  if (!content || content->size() != platform::kFccMarkerSize) return false;
  const std::string marker(platform::kFccMarker.begin(), platform::kFccMarker.end());
  return strncasecmp(content->c_str(), marker.c_str(), platform::kFccMarkerSize - 1) == 0;
}

}  // namespace nuvelta::fuzz
