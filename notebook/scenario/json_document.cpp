#include "notebook/scenario/json_document.h"

#include <algorithm>
#include <set>
#include <vector>

#include "notebook/scenario/scenario_error.h"
#include "notebook/scenario/scenario_text.h"

namespace nuvelta::virtual_notebook {

namespace {

using nlohmann::json;

// The parser's words without their number and place. The text that it read last
// can be as long as the file and is cut; what it expected stands behind that.
std::string Described(std::string_view what) {
  what.remove_prefix(std::min(what.find("] ") + 2, what.size()));
  if (what.starts_with("parse error")) what.remove_prefix(what.find(": ") + 2);
  const size_t expected = what.rfind("; expected ");
  return Shown(what.substr(0, expected), 150) + (expected == std::string_view::npos
                                                     ? "; expected JSON"
                                                     : Shown(what.substr(expected), 150));
}

// Walks the text once, ahead of the parser proper, which keeps the last of two
// equal keys without a word and sets no limit to nesting.
class StructureCheck final : public json::json_sax_t {
 public:
  StructureCheck(std::string_view text, const std::string& file) : m_text(text), m_file(file) {}

  bool null() override { return Value(); }
  bool boolean(bool /*value*/) override { return Value(); }
  bool number_integer(number_integer_t /*value*/) override { return Value(); }
  bool number_unsigned(number_unsigned_t /*value*/) override { return Value(); }
  bool number_float(number_float_t /*value*/, const string_t& /*text*/) override { return Value(); }
  bool string(string_t& /*value*/) override { return Value(); }
  bool binary(binary_t& /*value*/) override { return Value(); }
  bool start_object(size_t /*elements*/) override { return Enter(false); }
  bool start_array(size_t /*elements*/) override { return Enter(true); }
  bool end_object() override { return Leave(); }
  bool end_array() override { return Leave(); }

  bool key(string_t& key) override {
    Level& level = m_levels.back();
    level.step = PointerStep(key);
    if (!level.keys.insert(key).second) {
      throw ScenarioError(m_file + ": " + Path() + ": key given twice; expected it once");
    }
    return true;
  }

  bool parse_error(size_t position, const std::string& /*token*/,
                   const json::exception& error) override {
    // The position counts the bytes read, the faulty one included.
    const std::string_view before = m_text.substr(0, position == 0 ? 0 : position - 1);
    const auto line = std::ranges::count(before, '\n') + 1;
    const size_t column = before.size() - (before.rfind('\n') + 1) + 1;
    throw ScenarioError(m_file + ": line " + std::to_string(line) + ", column " +
                        std::to_string(column) + ": " + Described(error.what()));
  }

 private:
  struct Level {
    bool list = false;
    size_t index = 0;
    std::string step;
    std::set<std::string, std::less<>> keys;
  };

  bool Value() {
    if (!m_levels.empty() && m_levels.back().list) {
      m_levels.back().step = "/" + std::to_string(m_levels.back().index++);
    }
    return true;
  }

  bool Enter(bool list) {
    Value();
    if (m_levels.size() == kDeepestNesting) {
      throw ScenarioError(m_file + ": " + Path() + ": nests too deep; expected at most " +
                          std::to_string(kDeepestNesting) + " levels");
    }
    m_levels.push_back({.list = list, .index = 0, .step = {}, .keys = {}});
    return true;
  }

  bool Leave() {
    m_levels.pop_back();
    return true;
  }

  std::string Path() const {
    std::string path;
    for (const Level& level : m_levels) path += level.step;
    return path;
  }

  std::string_view m_text;
  const std::string& m_file;
  std::vector<Level> m_levels;
};

}  // namespace

std::string PointerStep(std::string_view key) {
  std::string step = "/";
  for (const char c : Shown(key)) {
    if (c == '~') {
      step += "~0";
    } else if (c == '/') {
      step += "~1";
    } else {
      step += c;
    }
  }
  return step;
}

json ParseDocument(std::string_view text, const std::string& file) {
  StructureCheck check(text, file);
  json::sax_parse(text, &check);
  return json::parse(text);
}

}  // namespace nuvelta::virtual_notebook
