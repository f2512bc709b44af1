#include "notebook/program/log_counts.h"

#include "notebook/story/log_lines.h"

namespace nuvelta::story {

namespace {

uint32_t Count(std::string_view log, std::string_view text) {
  uint32_t count = 0;
  for (size_t at = log.find(text); at != std::string_view::npos; at = log.find(text, at + 1)) {
    ++count;
  }
  return count;
}

}  // namespace

LogCounts& LogCounts::operator+=(const LogCounts& other) {
  triggers += other.triggers;
  runs += other.runs;
  retries += other.retries;
  give_ups += other.give_ups;
  return *this;
}

LogCounts CountLog(std::string_view log) {
  return {.triggers = Count(log, kTriggered),
          .runs = Count(log, kRunEnded),
          .retries = Count(log, kRetried),
          .give_ups = Count(log, kGivenUp)};
}

}  // namespace nuvelta::story
