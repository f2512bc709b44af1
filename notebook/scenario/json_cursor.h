// A checked view of a scenario's JSON: each value knows its place, so that
// whatever is wrong is refused with file, JSON path and what was expected.
#pragma once

#include <array>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "notebook/model/scenario.h"
#include "platform/types.h"

namespace nuvelta::virtual_notebook {

// A word of the format and what it stands for.
template <class Value>
struct Word {
  std::string_view name;
  Value value;
};
template <class Value>
Word(std::string_view, Value) -> Word<Value>;

// One value. Every function that reads throws ScenarioError when the value is of
// another type or out of range. The JSON and the file's name must outlive it.
class JsonCursor {
 public:
  JsonCursor(const nlohmann::json& value, const std::string& file, std::string path = {})
      : m_value(&value), m_file(&file), m_path(std::move(path)) {}

  bool IsNull() const { return m_value->is_null(); }
  bool IsText() const { return m_value->is_string(); }
  bool IsNumber() const { return m_value->is_number(); }
  bool IsObject() const { return m_value->is_object(); }
  const nlohmann::json& Value() const { return *m_value; }

  bool Bool() const;
  // A text that holds the character zero is refused.
  std::string Text() const;
  std::string NonEmptyText() const;
  int64_t Whole(int64_t least, int64_t most) const;
  // A whole number of 32 bits, or its "0x" text.
  uint32_t Code() const;
  uint32_t NonZeroCode() const;
  // A code whose highest bit is set.
  uint32_t FailingHresult() const;
  Duration Seconds(int64_t least, int64_t most) const;
  Duration Milliseconds(int64_t most) const;
  Duration Days(int64_t most) const;
  std::vector<uint8_t> Hex() const;
  platform::Guid Guid() const;

  template <class Value, size_t kSize>
  Value Choice(const std::array<Word<Value>, kSize>& words) const {
    std::array<std::string_view, kSize> names;
    for (size_t i = 0; i < kSize; ++i) names[i] = words[i].name;
    return words[ChoiceOf(names)].value;
  }

  // The elements of a list.
  std::vector<JsonCursor> Items() const;
  // The members of an object whose keys are names of the notebook's own. Names
  // that differ in letter case alone are one name, and refused.
  std::vector<std::pair<std::string, JsonCursor>> Members() const;
  JsonCursor At(const std::string& key) const;

  [[noreturn]] void Refuse(const std::string& wrong, const std::string& expected) const;
  // The same with the value itself as what is wrong.
  [[noreturn]] void RefuseValue(const std::string& expected) const;

 private:
  double Number(int64_t least, int64_t most) const;
  size_t ChoiceOf(std::span<const std::string_view> names) const;

  const nlohmann::json* m_value;
  const std::string* m_file;
  std::string m_path;
};

// An object whose keys are the format's. Unknown ones are refused at once.
class JsonObject {
 public:
  JsonObject(const JsonCursor& at, std::vector<std::string_view> keys);

  const JsonCursor& Where() const { return m_at; }
  bool Has(std::string_view key) const { return Find(key).has_value(); }
  std::optional<JsonCursor> Find(std::string_view key) const;
  // Refuses the object when the key is missing.
  JsonCursor Need(std::string_view key) const;
  // The one of `keys` that is present; nothing when none is. Two are refused.
  std::optional<std::string_view> OneOf(std::span<const std::string_view> keys) const;

  // Each sets `out` when the key is present.
  void Read(std::string_view key, bool& out) const;
  void Read(std::string_view key, std::string& out) const;
  void ReadMilliseconds(std::string_view key, Duration& out, int64_t most) const;
  template <class Integer>
  void ReadWhole(std::string_view key, Integer& out, int64_t least, int64_t most) const {
    if (const auto value = Find(key)) out = static_cast<Integer>(value->Whole(least, most));
  }

 private:
  JsonCursor m_at;
  std::vector<std::string_view> m_keys;
};

}  // namespace nuvelta::virtual_notebook
