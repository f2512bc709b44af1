#include "notebook/story/log_lines.h"

#include <charconv>

#include "notebook/story/text_shape.h"

namespace nuvelta::story {

namespace {

constexpr std::string_view kShape = "dddd-dd-dd dd:dd:dd.ddd xxxxxxxx ";
constexpr size_t kTimeLength = 23;
constexpr size_t kThreadLength = 8;

}  // namespace

std::vector<LogLine> ParseLog(std::string_view log) {
  std::vector<LogLine> lines;
  size_t begin = std::string_view::npos;  // of the record being read
  const auto finish = [&](size_t end) {
    if (begin == std::string_view::npos) return;
    std::string_view record = log.substr(begin, end - begin);
    if (record.ends_with("\r\n")) record.remove_suffix(2);
    lines.push_back({.time = record.substr(0, kTimeLength),
                     .thread = record.substr(kTimeLength + 1, kThreadLength),
                     .text = record.substr(kShape.size())});
  };
  for (size_t at = 0; at < log.size();) {
    if (BeginsWithShape(log.substr(at), kShape)) {
      finish(at);
      begin = at;
    }
    const size_t end = log.find('\n', at);
    at = end == std::string_view::npos ? log.size() : end + 1;
  }
  finish(log.size());
  return lines;
}

bool Fits(std::string_view text, std::string_view pattern) {
  if (!pattern.ends_with('*')) return text == pattern;
  return text.starts_with(pattern.substr(0, pattern.size() - 1));
}

std::optional<int64_t> NumberBehind(std::string_view text, std::string_view mark) {
  const size_t at = text.find(mark);
  if (at == std::string_view::npos) return {};
  int64_t number = 0;
  const char* const begin = text.data() + at + mark.size();
  if (std::from_chars(begin, text.data() + text.size(), number).ec != std::errc()) return {};
  return number;
}

}  // namespace nuvelta::story
