// Finds which of many known texts a message is, at a few nanoseconds for each.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "support/line_kinds.h"

namespace nuvelta::support {

// A text ends in "*" where something follows that differs; "[#]" is a number in brackets.
struct KnownText {
  std::string_view text;
  LineKind kind = LineKind::kOther;
};

class TextIndex {
 public:
  // The texts have to live as long. Of several that fit the first one counts.
  explicit TextIndex(std::span<const KnownText> texts);

  // kUnknown when it is none of them.
  LineMeaning Find(std::string_view text) const;

 private:
  // A text up to its first place that differs.
  struct Entry {
    std::string_view head;
    std::string_view behind_number{};  // what follows behind "[#]"
    LineKind kind = LineKind::kOther;
    bool open = false;  // anything may follow the head
    bool numbered = false;
  };

  static bool Fits(const Entry& entry, std::string_view text, std::string_view& rest);

  std::vector<Entry> m_entries;  // by their slots
  std::vector<uint16_t> m_begins;
};

}  // namespace nuvelta::support
