#include "story_lines.h"

#include <array>
#include <exception>
#include <string_view>

#include "lives/trace_rules.h"

namespace nuvelta::test {

namespace {

bool HasTag(std::string_view text) {
  constexpr std::array<std::string_view, 5> kTags{"e :   ", "i :   ", "w :   ", "h : + ", "h : - "};
  for (const std::string_view tag : kTags) {
    if (text.size() > tag.size() && text.starts_with(tag)) return true;
  }
  return false;
}

}  // namespace

StoryLines ReadLines(const Told& told) {
  StoryLines story;
  std::vector<Record> records;
  try {
    records = told.Records();
  } catch (const std::exception& error) {
    story.faults.emplace_back(error.what());
    return story;
  }
  explore::Findings unheard;  // the verdict asks for all rules of a log itself
  explore::TraceRules traces(unheard);
  std::string_view time;
  for (const Record& record : records) {
    const std::string scope(traces.Innermost(record.thread));
    if (!HasTag(record.text)) story.faults.push_back("no level: " + record.text);
    if (record.time < time) story.faults.push_back("time runs backwards: " + record.text);
    traces.Take({.thread = record.thread, .text = record.text});
    time = record.time;
    story.lines.push_back({record.thread, scope, record.text});
  }
  return story;
}

}  // namespace nuvelta::test
