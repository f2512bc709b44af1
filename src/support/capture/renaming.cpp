#include "support/capture/renaming.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <set>
#include <utility>

#include "common/text_util.h"
#include "support/wide_text.h"

namespace nuvelta::support {

namespace {

constexpr size_t kShortest = 4;  // characters
constexpr size_t kShortestIdeographs = 2;
constexpr size_t kCounting = 3;  // characters that count
constexpr unsigned kHighestNumber = 1000;
constexpr size_t kGuidText = 36;

// What stands for the letters of a script: one of the same length in every encoding.
struct Script {
  char16_t first, last;
  char16_t filler;
  std::u16string_view digits;  // of those that count; empty: none does
};
constexpr std::array kScripts{
    Script{u'0', u'9', u'9', u"0123456789"},
    Script{u'a', u'z', u'x', u"abcdefghijklmnopqrstuvwxyz"},
    Script{0x00C0, 0x024F, u'é', {}},
    Script{0x0386, 0x03FF, u'λ', {}},
    Script{0x0400, 0x04FF, u'я', {}},
    Script{0x3041, 0x3096, u'の', {}},
    Script{0x30A1, 0x30FA, u'ノ', {}},
    Script{0x4E00, 0x9FFF, u'某', u"甲乙丙丁戊己庚辛壬癸"},
    Script{0xAC00, 0xD7A3, u'가', {}},
};

const Script* ScriptOf(char16_t unit) {
  const auto script = std::ranges::find_if(
      kScripts, [&](const Script& one) { return unit >= one.first && unit <= one.last; });
  return script == kScripts.end() ? nullptr : &*script;
}

std::string FoldedName(std::string_view text) {
  std::string folded(text);
  std::ranges::transform(folded, folded.begin(), ToLower);
  return folded;
}

std::u16string ReplacementOfWide(std::u16string name, unsigned number) {
  size_t counting = kCounting;
  for (auto unit = name.rbegin(); unit != name.rend(); ++unit) {
    const Script* const script = ScriptOf(*unit);
    if (script == nullptr) continue;
    *unit = script->filler;
    if (counting == 0 || script->digits.empty()) continue;
    *unit = script->digits[number % script->digits.size()];
    number /= static_cast<unsigned>(script->digits.size());
    --counting;
  }
  return name;
}

std::string UuidText(unsigned number) {
  std::array<char, kGuidText + 1> text{};
  std::snprintf(text.data(), text.size(), "00000000-0000-0000-0000-%012u", number);
  return text.data();
}

std::string UuidBytes(unsigned number) {
  std::string bytes(16, '\0');
  bytes[14] = static_cast<char>(number >> 8U);
  bytes[15] = static_cast<char>(number & 0xFFU);
  return bytes;
}

std::string Standing(const FoundName& name, const std::string& folded, unsigned number) {
  return name.kind == NameKind::kUuid ? UuidText(number) : ReplacementOf(folded, number);
}

bool HasTheForm(const FoundName& name, const std::string& folded) {
  for (unsigned number = 1; number < kHighestNumber; ++number) {
    if (Standing(name, folded, number) == folded) return true;
  }
  return false;
}

NameFate FateOf(const std::string& folded, const std::vector<std::string>& kept) {
  const std::u16string wide = WideOf(folded);
  const auto is_ideograph = [](char16_t unit) { return unit >= 0x3041 && unit <= 0xD7A3; };
  const size_t least = std::ranges::any_of(wide, is_ideograph) ? kShortestIdeographs : kShortest;
  const bool has_letters =
      std::ranges::any_of(wide, [](char16_t unit) { return ScriptOf(unit) != nullptr; });
  if (wide.size() < least || !has_letters) return NameFate::kTooShort;
  const auto holds = [&](const std::string& text) {
    return text.find(folded) != std::string::npos;
  };
  return std::ranges::any_of(kept, holds) ? NameFate::kDecisive : NameFate::kReplaced;
}

// In the letter case of what stood there.
void PutAs(std::string_view was, std::string_view to, std::string& out) {
  for (size_t i = 0; i < to.size(); ++i) {
    const bool upper = i < was.size() && was[i] >= 'A' && was[i] <= 'Z';
    out += upper ? ToUpper(to[i]) : to[i];
  }
}

}  // namespace

const char* NameOf(NameKind kind) {
  constexpr std::array kNames{"serial number", "asset tag", "UUID", "account name",
                              "computer name"};
  return kNames[static_cast<size_t>(kind)];
}

std::string ReplacementOf(const std::string& name, unsigned number) {
  return Utf8Of(ReplacementOfWide(WideOf(name), number));
}

Renaming::Renaming(std::span<const FoundName> names, std::span<const std::string> kept) {
  std::vector<std::string> folded_kept;
  for (const std::string& text : kept) folded_kept.push_back(FoldedName(text));
  std::set<std::string> taken;
  for (const FoundName& name : names) taken.insert(FoldedName(name.text));
  std::set<std::string> seen;
  unsigned number = 0;
  for (const FoundName& name : names) {
    const std::string folded = FoldedName(name.text);
    if (!seen.insert(folded).second) continue;
    const NameFate fate = FateOf(folded, folded_kept);
    m_report.push_back({name.kind, WideOf(name.text).size(), fate});
    if (fate != NameFate::kReplaced || HasTheForm(name, folded)) continue;
    std::string to;
    do {
      to = Standing(name, folded, ++number);
    } while (taken.contains(to) && number < kHighestNumber);
    taken.insert(to);
    AddName(name, to);
    if (name.kind == NameKind::kUuid) Add(m_names.size() - 1, name.raw, UuidBytes(number));
  }
  std::ranges::stable_sort(m_spellings, std::ranges::greater(),
                           [](const Spelling& spelling) { return spelling.from.size(); });
  for (size_t i = 0; i < m_spellings.size(); ++i) {
    m_by_first[static_cast<unsigned char>(m_spellings[i].from.front())].push_back(i);
  }
}

void Renaming::Add(size_t name, const std::string& from, const std::string& to) {
  if (from.empty() || from.size() != to.size()) return;
  m_spellings.push_back({FoldedName(from), from, to, name});
}

void Renaming::AddName(const FoundName& name, const std::string& to) {
  const size_t index = m_names.size();
  m_names.push_back(name.text);
  const std::u16string wide = WideOf(name.text);
  const std::u16string wide_to = WideOf(to);
  Add(index, name.text, to);
  Add(index, WideBytes(wide), WideBytes(wide_to));
  const std::string ansi = ToAnsi(wide);
  if (ansi == name.text || Utf8OfAnsi(ansi) != name.text) return;
  std::string ansi_to = ToAnsi(wide_to);
  // The code page may lack what stands for a letter.
  if (ansi_to.size() != ansi.size()) ansi_to = std::string(ansi.size(), 'x');
  Add(index, ansi, ansi_to);
}

const Renaming::Spelling* Renaming::At(std::string_view bytes) const {
  for (const size_t index : m_by_first[static_cast<unsigned char>(ToLower(bytes.front()))]) {
    const Spelling& spelling = m_spellings[index];
    if (bytes.size() >= spelling.from.size() &&
        EqualIgnoreCase(bytes.substr(0, spelling.from.size()), spelling.from)) {
      return &spelling;
    }
  }
  return nullptr;
}

std::string Renaming::Rename(std::string_view bytes) const {
  std::string renamed;
  renamed.reserve(bytes.size());
  while (!bytes.empty()) {
    const Spelling* const spelling = At(bytes);
    if (spelling == nullptr) {
      renamed += bytes.front();
      bytes.remove_prefix(1);
    } else {
      PutAs(bytes.substr(0, spelling->from.size()), spelling->to, renamed);
      bytes.remove_prefix(spelling->from.size());
    }
  }
  return renamed;
}

void Renaming::Rename(std::vector<uint8_t>& bytes) const {
  const std::string renamed =
      Rename(std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
  bytes.assign(renamed.begin(), renamed.end());
}

std::vector<std::string> Renaming::SurvivorsIn(std::string_view bytes) const {
  std::set<size_t> found;
  for (const Spelling& spelling : m_spellings) {
    if (bytes.find(spelling.exact) != std::string_view::npos) found.insert(spelling.name);
  }
  std::vector<std::string> names;
  names.reserve(found.size());
  for (const size_t index : found) names.push_back(m_names[index]);
  return names;
}

}  // namespace nuvelta::support
