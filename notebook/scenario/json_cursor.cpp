#include "notebook/scenario/json_cursor.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <set>
#include <stdexcept>

#include "notebook/model/unicode.h"
#include "notebook/scenario/json_document.h"
#include "notebook/scenario/scenario_error.h"
#include "notebook/scenario/scenario_text.h"

namespace nuvelta::virtual_notebook {

namespace {

using nlohmann::json;

std::string Range(int64_t least, int64_t most) {
  return "from " + std::to_string(least) + " to " + std::to_string(most);
}

}  // namespace

void JsonCursor::Refuse(const std::string& wrong, const std::string& expected) const {
  throw ScenarioError(*m_file + ": " + (m_path.empty() ? "/" : m_path) + ": " + wrong +
                      "; expected " + expected);
}

void JsonCursor::RefuseValue(const std::string& expected) const {
  if (m_value->is_object()) Refuse("found an object", expected);
  if (m_value->is_array()) Refuse("found a list", expected);
  if (IsText()) Refuse("found \"" + Shown(m_value->get_ref<const std::string&>()) + "\"", expected);
  Refuse("found " + m_value->dump(), expected);
}

bool JsonCursor::Bool() const {
  if (!m_value->is_boolean()) RefuseValue("true or false");
  return m_value->get<bool>();
}

std::string JsonCursor::Text() const {
  if (!IsText()) RefuseValue("a text");
  const auto& text = m_value->get_ref<const std::string&>();
  if (text.find('\0') != std::string::npos) RefuseValue("a text without the character zero");
  return text;
}

std::string JsonCursor::NonEmptyText() const {
  std::string text = Text();
  if (text.empty()) RefuseValue("a text that is not empty");
  return text;
}

int64_t JsonCursor::Whole(int64_t least, int64_t most) const {
  const std::string expected = "a whole number " + Range(least, most);
  if (!m_value->is_number_integer()) RefuseValue(expected);
  // A number beyond the signed type would wrap around.
  const bool huge = m_value->is_number_unsigned() &&
                    m_value->get<uint64_t>() > uint64_t{std::numeric_limits<int64_t>::max()};
  if (huge || m_value->get<int64_t>() < least || m_value->get<int64_t>() > most) {
    RefuseValue(expected);
  }
  return m_value->get<int64_t>();
}

uint32_t JsonCursor::Code() const {
  if (IsNumber()) return static_cast<uint32_t>(Whole(0, 0xFFFFFFFF));
  if (IsText()) {
    if (const auto code = ParseCode(m_value->get_ref<const std::string&>())) return *code;
  }
  RefuseValue("a number of 32 bits, or its text such as \"0x8007001F\"");
}

uint32_t JsonCursor::NonZeroCode() const {
  const uint32_t code = Code();
  if (code == 0) RefuseValue("a code other than 0, which means success");
  return code;
}

uint32_t JsonCursor::FailingHresult() const {
  const uint32_t code = Code();
  if (code < 0x80000000) RefuseValue("a failing HRESULT such as \"0x8007001F\"");
  return code;
}

double JsonCursor::Number(int64_t least, int64_t most) const {
  const std::string expected = "a number " + Range(least, most);
  if (!IsNumber()) RefuseValue(expected);
  const double number = m_value->get<double>();
  const bool inside = number >= static_cast<double>(least) && number <= static_cast<double>(most);
  if (!inside) RefuseValue(expected);
  return number;
}

Duration JsonCursor::Seconds(int64_t least, int64_t most) const {
  return Duration(std::llround(Number(least, most) * 1e9));
}

Duration JsonCursor::Milliseconds(int64_t most) const {
  return Duration(std::llround(Number(0, most) * 1e6));
}

Duration JsonCursor::Days(int64_t most) const {
  return Duration(std::llround(Number(0, most) * 86400e9));
}

std::vector<uint8_t> JsonCursor::Hex() const {
  if (!IsText()) RefuseValue("bytes as a text of hexadecimal digits");
  auto bytes = ParseHex(m_value->get_ref<const std::string&>());
  if (!bytes) RefuseValue("pairs of hexadecimal digits");
  return *std::move(bytes);
}

platform::Guid JsonCursor::Guid() const {
  const auto guid = IsText() ? ParseGuid(m_value->get_ref<const std::string&>()) : std::nullopt;
  if (!guid) RefuseValue("a GUID such as \"{11223344-5566-7788-99AA-BBCCDDEEFF11}\"");
  return *guid;
}

size_t JsonCursor::ChoiceOf(std::span<const std::string_view> names) const {
  const std::string expected = "one of " + QuotedList(names);
  if (!IsText()) RefuseValue(expected);
  const auto& text = m_value->get_ref<const std::string&>();
  const auto found = std::ranges::find(names, text);
  if (found == names.end()) RefuseValue(expected + Suggestion(text, names));
  return static_cast<size_t>(found - names.begin());
}

std::vector<JsonCursor> JsonCursor::Items() const {
  if (!m_value->is_array()) RefuseValue("a list");
  std::vector<JsonCursor> items;
  for (const json& item : *m_value) {
    items.emplace_back(item, *m_file, m_path + "/" + std::to_string(items.size()));
  }
  return items;
}

std::vector<std::pair<std::string, JsonCursor>> JsonCursor::Members() const {
  if (!IsObject()) RefuseValue("an object");
  std::vector<std::pair<std::string, JsonCursor>> members;
  std::set<std::string> names;
  for (const auto& [key, value] : m_value->items()) {
    const JsonCursor member(value, *m_file, m_path + PointerStep(key));
    if (key.find('\0') != std::string::npos) {
      member.Refuse("the name holds the character zero", "a name without it");
    }
    if (!names.insert(Folded(key)).second) {
      member.Refuse("another name differs in letter case only", "each name once");
    }
    members.emplace_back(key, member);
  }
  return members;
}

JsonCursor JsonCursor::At(const std::string& key) const {
  return {m_value->at(key), *m_file, m_path + PointerStep(key)};
}

JsonObject::JsonObject(const JsonCursor& at, std::vector<std::string_view> keys)
    : m_at(at), m_keys(std::move(keys)) {
  if (!at.IsObject()) at.RefuseValue("an object");
  for (const auto& [key, value] : at.Value().items()) {
    if (std::ranges::find(m_keys, key) != m_keys.end()) continue;
    at.At(key).Refuse("unknown key", "one of " + QuotedList(m_keys) + Suggestion(key, m_keys));
  }
}

std::optional<JsonCursor> JsonObject::Find(std::string_view key) const {
  if (std::ranges::find(m_keys, key) == m_keys.end()) {
    throw std::logic_error("a scenario key is read but not listed: " + std::string(key));
  }
  const std::string name(key);
  if (!m_at.Value().contains(name)) return {};
  return m_at.At(name);
}

JsonCursor JsonObject::Need(std::string_view key) const {
  auto value = Find(key);
  if (!value) m_at.Refuse("incomplete", "the key \"" + std::string(key) + "\" too");
  return *std::move(value);
}

std::optional<std::string_view> JsonObject::OneOf(std::span<const std::string_view> keys) const {
  std::optional<std::string_view> found;
  for (const std::string_view key : keys) {
    if (!Has(key)) continue;
    if (found) {
      Need(key).Refuse("given together with \"" + std::string(*found) + "\"",
                       "only one of " + QuotedList(keys));
    }
    found = key;
  }
  return found;
}

void JsonObject::Read(std::string_view key, bool& out) const {
  if (const auto value = Find(key)) out = value->Bool();
}

void JsonObject::Read(std::string_view key, std::string& out) const {
  if (const auto value = Find(key)) out = value->Text();
}

void JsonObject::ReadMilliseconds(std::string_view key, Duration& out, int64_t most) const {
  if (const auto value = Find(key)) out = value->Milliseconds(most);
}

}  // namespace nuvelta::virtual_notebook
