#include "support/text_index.h"

#include <algorithm>
#include <cstring>

namespace nuvelta::support {

namespace {

constexpr size_t kSlots = 1024;

// By the first four characters, so that a message is compared with few texts. Those with
// a number in front share a slot.
size_t SlotOf(std::string_view text) {
  if (text.starts_with('[')) return 0;
  uint32_t front = 0;
  std::memcpy(&front, text.data(), std::min(text.size(), sizeof front));
  return static_cast<size_t>((front * 2654435761U) >> 22U);
}

// What follows a number and its closing bracket; nothing when there is none.
std::string_view BehindNumber(std::string_view text) {
  size_t at = 0;
  while (at < text.size() && text[at] >= '0' && text[at] <= '9') ++at;
  return at > 0 && at < text.size() && text[at] == ']' ? text.substr(at + 1) : std::string_view();
}

}  // namespace

TextIndex::TextIndex(std::span<const KnownText> texts) : m_begins(kSlots + 1) {
  for (size_t slot = 0; slot < kSlots; ++slot) {
    m_begins[slot] = static_cast<uint16_t>(m_entries.size());
    for (const KnownText& known : texts) {
      if (SlotOf(known.text) != slot) continue;
      const size_t number = known.text.find("[#]");
      Entry entry{.head = known.text.substr(0, number), .kind = known.kind};
      entry.numbered = number != std::string_view::npos;
      if (entry.numbered) {
        entry.head = known.text.substr(0, number + 1);
        entry.behind_number = known.text.substr(number + 3);
      } else if (entry.head.ends_with('*')) {
        entry.open = true;
        entry.head.remove_suffix(1);
      }
      m_entries.push_back(entry);
    }
  }
  m_begins[kSlots] = static_cast<uint16_t>(m_entries.size());
}

bool TextIndex::Fits(const Entry& entry, std::string_view text, std::string_view& rest) {
  const size_t size = entry.head.size();
  if (text.size() < size || std::memcmp(text.data(), entry.head.data(), size) != 0) return false;
  rest = text.substr(size);
  if (!entry.numbered) return entry.open || rest.empty();
  const std::string_view behind = BehindNumber(rest);
  std::string_view wanted = entry.behind_number;
  const bool open = wanted.ends_with('*');
  if (open) wanted.remove_suffix(1);
  if (!behind.starts_with(wanted)) return false;
  rest = behind.substr(wanted.size());
  return open || rest.empty();
}

LineMeaning TextIndex::Find(std::string_view text) const {
  const size_t slot = SlotOf(text);
  LineMeaning meaning;
  for (size_t i = m_begins[slot]; i < m_begins[slot + 1]; ++i) {
    if (!Fits(m_entries[i], text, meaning.rest)) continue;
    meaning.kind = m_entries[i].kind;
    return meaning;
  }
  return {};
}

}  // namespace nuvelta::support
