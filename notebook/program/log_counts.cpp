#include "notebook/program/log_counts.h"

#include "support/log_lines.h"

namespace nuvelta::story {

void LogCounts::Add(support::LineKind kind) {
  using enum support::LineKind;
  if (kind == kTaskMade) ++triggers;
  if (kind == kRunEnds) ++runs;
  if (kind == kRetry) ++retries;
  if (kind == kGiveUp) ++give_ups;
}

LogCounts CountLog(std::string_view log) {
  LogCounts counts;
  for (const support::LogLine& line : support::ParseLog(log)) {
    counts.Add(support::MeaningOf(line.text).kind);
  }
  return counts;
}

}  // namespace nuvelta::story
