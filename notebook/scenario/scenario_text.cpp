#include "notebook/scenario/scenario_text.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <numeric>
#include <utility>

#include "notebook/model/unicode.h"

namespace nuvelta::virtual_notebook {

namespace {

// The number that `text` holds from `offset` on; the caller has checked the form.
template <class Number>
Number NumberAt(std::string_view text, size_t offset, size_t digits, int base) {
  Number number{};
  std::from_chars(text.data() + offset, text.data() + offset + digits, number, base);
  return number;
}

bool IsHexDigit(char c) {
  return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
}

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// Whether `text` has the form of `form`, in which "x" stands for a hexadecimal
// digit, "9" for a decimal one, and any other character for itself.
bool HasForm(std::string_view text, std::string_view form) {
  return std::ranges::equal(text, form, [](char c, char wanted) {
    if (wanted == 'x') return IsHexDigit(c);
    return wanted == '9' ? IsDigit(c) : c == wanted;
  });
}

// Insertions, deletions, replacements and swaps of neighbours.
size_t EditDistance(std::string_view left, std::string_view right) {
  std::vector<size_t> before_last(right.size() + 1);
  std::vector<size_t> last(right.size() + 1);
  std::iota(last.begin(), last.end(), size_t{0});
  for (size_t i = 0; i < left.size(); ++i) {
    std::vector<size_t> row(right.size() + 1, i + 1);
    for (size_t j = 0; j < right.size(); ++j) {
      const size_t replaced = last[j] + (left[i] == right[j] ? 0 : 1);
      row[j + 1] = std::min({replaced, row[j] + 1, last[j + 1] + 1});
      const bool swapped = i > 0 && j > 0 && left[i] == right[j - 1] && left[i - 1] == right[j];
      if (swapped) row[j + 1] = std::min(row[j + 1], before_last[j - 1] + 1);
    }
    before_last = std::exchange(last, std::move(row));
  }
  return last[right.size()];
}

}  // namespace

std::optional<std::vector<uint8_t>> ParseHex(std::string_view text) {
  std::vector<uint8_t> bytes;
  for (size_t i = 0; i < text.size(); i += 2) {
    if (text.size() - i < 2 || !IsHexDigit(text[i]) || !IsHexDigit(text[i + 1])) return {};
    bytes.push_back(NumberAt<uint8_t>(text, i, 2, 16));
    if (i + 2 < text.size() && text[i + 2] == ' ') ++i;
  }
  return bytes;
}

std::optional<uint32_t> ParseCode(std::string_view text) {
  if (!text.starts_with("0x") || text.size() < 3 || text.size() > 10) return {};
  if (!std::ranges::all_of(text.substr(2), IsHexDigit)) return {};
  return NumberAt<uint32_t>(text, 2, text.size() - 2, 16);
}

std::optional<platform::Guid> ParseGuid(std::string_view text) {
  if (text.starts_with('{') && text.ends_with('}')) text = text.substr(1, text.size() - 2);
  if (!HasForm(text, "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx")) return {};
  platform::Guid guid{.Data1 = NumberAt<uint32_t>(text, 0, 8, 16),
                      .Data2 = NumberAt<uint16_t>(text, 9, 4, 16),
                      .Data3 = NumberAt<uint16_t>(text, 14, 4, 16),
                      .Data4 = {}};
  for (size_t i = 0; i < guid.Data4.size(); ++i) {
    guid.Data4[i] = NumberAt<uint8_t>(text, (i < 2 ? 19 : 20) + 2 * i, 2, 16);
  }
  return guid;
}

bool IsDateTime(std::string_view text) {
  if (!HasForm(text, "9999-99-99 99:99:99")) return false;
  const auto year = NumberAt<int>(text, 0, 4, 10);
  const std::chrono::year_month_day date{std::chrono::year(year),
                                         std::chrono::month(NumberAt<unsigned>(text, 5, 2, 10)),
                                         std::chrono::day(NumberAt<unsigned>(text, 8, 2, 10))};
  return year >= 1990 && year <= 2099 && date.ok() && NumberAt<int>(text, 11, 2, 10) < 24 &&
         NumberAt<int>(text, 14, 2, 10) < 60 && NumberAt<int>(text, 17, 2, 10) < 60;
}

bool IsVersion(std::string_view text) {
  for (int part = 0; part < 4; ++part) {
    const auto digits = static_cast<size_t>(std::ranges::find_if_not(text, IsDigit) - text.begin());
    if (digits == 0 || digits > 5 || NumberAt<uint32_t>(text, 0, digits, 10) > 0xFFFF) return false;
    text.remove_prefix(digits);
    if (part < 3 && !text.starts_with('.')) return false;
    if (part < 3) text.remove_prefix(1);
  }
  return text.empty();
}

std::string Shown(std::string_view text, size_t limit) {
  constexpr std::string_view digits = "0123456789ABCDEF";
  std::string shown;
  for (const char c : text) {
    if (shown.size() >= limit) return shown + "...";
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= 0x20 && byte < 0x7F) {
      shown += c;
    } else {
      shown += {'\\', 'x', digits[byte >> 4U], digits[byte & 15U]};
    }
  }
  return shown;
}

std::string QuotedList(std::span<const std::string_view> names) {
  std::string list;
  for (const std::string_view name : names) {
    if (!list.empty()) list += ", ";
    list.append("\"").append(name).append("\"");
  }
  return list;
}

std::string Suggestion(std::string_view name, std::span<const std::string_view> names) {
  size_t best = std::max<size_t>(1, std::min<size_t>(name.size(), 12) / 3) + 1;
  std::string_view found;
  for (const std::string_view candidate : names) {
    const size_t part = candidate.rfind("::");
    if (part != std::string_view::npos && candidate.substr(part + 2) == name) best = 0;
    // The lengths alone tell that a long text is far from every name.
    if (best != 0 && name.size() >= candidate.size() + best) continue;
    const size_t distance = best == 0 ? 0 : EditDistance(Folded(name), Folded(candidate));
    if (best != 0 && distance >= best) continue;
    best = distance;
    found = candidate;
    if (best == 0) break;
  }
  return found.empty() ? std::string() : "; did you mean \"" + std::string(found) + "\"?";
}

}  // namespace nuvelta::virtual_notebook
