// What a life broke.
#pragma once

#include <string>
#include <vector>

namespace nuvelta::explore {

// The first few findings; what follows them is mostly their consequence.
class Findings {
 public:
  void Add(std::string text) {
    if (m_texts.size() < kMost) m_texts.push_back(std::move(text));
  }
  void Expect(bool holds, const char* text) {
    if (!holds) Add(text);
  }
  const std::vector<std::string>& Texts() const { return m_texts; }

 private:
  static constexpr size_t kMost = 8;
  std::vector<std::string> m_texts;
};

}  // namespace nuvelta::explore
