#include "lives/shrinking.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "lives/life.h"

namespace nuvelta::explore {

using nlohmann::json;

namespace {

class Shrinker {
 public:
  Shrinker(json life, const std::function<bool(const json&)>& fails)
      : m_life(std::move(life)), m_fails(fails) {}

  json Run() {
    do {
      m_smaller = false;
      DropItems("events", Kept());
      DropItems("faults", 0);
      DropItems("delays", 0);
      DropMembers(json::json_pointer("/notebook"));
      DropMembers(json::json_pointer(""));
      SimplifyEvents();
    } while (m_smaller);
    return m_life;
  }

 private:
  // Events at the list's end that belong to the healthy end.
  size_t Kept() const { return m_life.value("story", "") == kHealthyEnd ? kHealthyEndEvents : 0; }

  bool Try(json candidate) {
    if (candidate == m_life || !m_fails(candidate)) return false;
    m_life = std::move(candidate);
    m_smaller = true;
    return true;
  }

  // Halves first, then smaller pieces, down to single items.
  void DropItems(const char* list, size_t kept) {
    if (!m_life.contains(list)) return;
    const auto left = [&] { return m_life[list].size() - std::min(kept, m_life[list].size()); };
    for (size_t piece = std::max<size_t>(left() / 2, 1); piece > 0; piece /= 2) {
      for (size_t at = 0; at + piece <= left();) {
        json candidate = m_life;
        json& items = candidate[list];
        const auto begin = items.begin() + static_cast<json::difference_type>(at);
        items.erase(begin, begin + static_cast<json::difference_type>(piece));
        if (!Try(std::move(candidate))) at += piece;
      }
    }
    if (m_life[list].empty()) DropMember(json::json_pointer(""), list);
  }

  bool DropMember(const json::json_pointer& where, const std::string& name) {
    json candidate = m_life;
    candidate[where].erase(name);
    return Try(std::move(candidate));
  }

  // Whole members, and what is inside of those that have to stay.
  void DropMembers(const json::json_pointer& where) {
    if (!m_life.contains(where) || !m_life[where].is_object()) return;
    std::vector<std::string> names;
    for (const auto& member : m_life[where].items()) names.push_back(member.key());
    for (const std::string& name : names) {
      const bool list = where.empty() && (name == "events" || name == "faults" || name == "delays");
      const bool needed = where.empty() && (name == "title" || name == "seed" || name == "story");
      if (list || needed || DropMember(where, name)) continue;
      DropMembers(where / name);
    }
  }

  void SimplifyEvents() {
    if (!m_life.contains("events")) return;
    const size_t count = m_life["events"].size() - std::min(Kept(), m_life["events"].size());
    for (size_t i = 0; i < count; ++i) {
      for (const char* name : {"repeat", "every_ms"}) {
        json candidate = m_life;
        candidate["events"][i].erase(name);
        candidate["events"][i].erase("every_ms");
        Try(std::move(candidate));
      }
      json candidate = m_life;
      json& at = candidate["events"][i]["at"];
      if (at.is_number()) at = std::floor(at.get<double>());
      Try(std::move(candidate));
    }
  }

  json m_life;
  const std::function<bool(const json&)>& m_fails;
  bool m_smaller = false;
};

}  // namespace

json Shrink(json life, const std::function<bool(const json& life)>& fails) {
  return Shrinker(std::move(life), fails).Run();
}

}  // namespace nuvelta::explore
