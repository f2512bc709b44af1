#include "story_lines.h"

#include <array>
#include <exception>
#include <map>
#include <utility>

namespace nuvelta::test {

namespace {

constexpr std::string_view kEntry = "h : + ";
constexpr std::string_view kExit = "h : - ";

// The scopes open on one thread. Some functions leave out an exit line, or write
// one more, and always have.
class Scopes {
 public:
  std::string Innermost() const { return m_open.empty() ? std::string() : m_open.back(); }

  // False when the line closes a scope that is not the innermost.
  bool Take(const std::string& text) {
    const std::string last = std::exchange(m_last, text);
    if (text.starts_with(kEntry)) {
      const std::string name = text.substr(kEntry.size());
      if (name != "CTaskFactory::createTask") m_open.push_back(name);
      return true;
    }
    if (text.starts_with(kExit)) return Close(text.substr(kExit.size()), last);
    const bool silent = Fits(text, "i :   after  front list size = *") ||
                        text == "i :   module current version not support MA,return";
    if (silent && !m_open.empty()) m_open.pop_back();
    return true;
  }

 private:
  bool Close(const std::string& name, const std::string& last) {
    if (name == "CommonUtil::IsDisableVerify") return true;
    if (m_open.empty() || m_open.back() != name) return false;
    const bool again =
        name == "CTaskAuthModule::doJob" && last == "i :   MBIM Device is not exist.";
    if (!again) m_open.pop_back();
    return true;
  }

  std::vector<std::string> m_open;
  std::string m_last;
};

bool HasTag(std::string_view text) {
  constexpr std::array<std::string_view, 5> kTags{"e :   ", "i :   ", "w :   ", kEntry, kExit};
  for (const std::string_view tag : kTags) {
    if (text.size() > tag.size() && text.starts_with(tag)) return true;
  }
  return false;
}

}  // namespace

bool Fits(std::string_view text, std::string_view pattern) {
  if (!pattern.ends_with('*')) return text == pattern;
  return text.starts_with(pattern.substr(0, pattern.size() - 1));
}

StoryLines ReadLines(const Told& told) {
  StoryLines story;
  std::vector<Record> records;
  try {
    records = told.Records();
  } catch (const std::exception& error) {
    story.faults.emplace_back(error.what());
    return story;
  }
  std::map<std::string, Scopes> threads;
  std::string time;
  for (Record& record : records) {
    Scopes& scopes = threads[record.thread];
    const std::string scope = scopes.Innermost();
    if (!HasTag(record.text)) story.faults.push_back("no level: " + record.text);
    if (record.time < time) story.faults.push_back("time runs backwards: " + record.text);
    if (!scopes.Take(record.text)) story.faults.push_back("not open: " + record.text);
    time = record.time;
    story.lines.push_back(
        {std::move(record.time), std::move(record.thread), scope, std::move(record.text)});
  }
  return story;
}

}  // namespace nuvelta::test
