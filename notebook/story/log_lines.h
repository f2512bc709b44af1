// The records of a log, in their order, and what some of their lines mean.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace nuvelta::story {

struct LogLine {
  std::string_view time{};  // "2026-11-16 00:58:46.000"
  std::string_view thread;
  // All behind the thread id and its blank: "h : + ServiceMain", "i :   text". A
  // message's own line ends are part of it.
  std::string_view text;
};

// The views point into `log`. Text that no record owns is left out.
std::vector<LogLine> ParseLog(std::string_view log);

// Of a process's first line, of the lines at the ends of a run, and of what becomes of a
// task.
inline constexpr std::string_view kProcessBegins = "   NService start ===";
inline constexpr std::string_view kRunBegins = "h : + CTaskAuthModule::doJob";
inline constexpr std::string_view kRunEnded = " Cast Time ";
inline constexpr std::string_view kTriggered = "CTaskFactory createTask TASK_TYPE_AUTH";
inline constexpr std::string_view kRetried = " retry deal task : ";
inline constexpr std::string_view kGivenUp = " <=0 ,give up the Task ";

inline bool Contains(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

// Whether `text` is `pattern`, or begins with it where the pattern ends in "*".
bool Fits(std::string_view text, std::string_view pattern);

// The number behind `mark`, if the text has the mark and a number there.
std::optional<int64_t> NumberBehind(std::string_view text, std::string_view mark);

}  // namespace nuvelta::story
