#include "wine/program/comparison.h"

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <map>
#include <regex>

#include "notebook/program/log_printer.h"

namespace nuvelta::wine_notebook {

using virtual_notebook::ProcessEnd;
using virtual_notebook::StoryReport;

namespace {

constexpr size_t kLinesBefore = 3;
constexpr size_t kLinesAfter = 2;

using Lines = std::vector<std::string>;

std::string Format(const char* format, ...) __attribute__((format(printf, 1, 2)));
std::string Format(const char* format, ...) {
  std::array<char, 256> text{};
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text.data(), text.size(), format, arguments);
  va_end(arguments);
  return text.data();
}

std::string EndText(const ProcessEnd& end) {
  if (end.how == ProcessEnd::How::kKilled) return "process killed";
  if (end.how == ProcessEnd::How::kCrashed) return "process crashed";
  return Format("process returned %u", end.exit_code);
}

// The whole log as lines: process, thread, text.
Lines WholeLines(const Telling& telling) {
  Lines lines;
  for (size_t process = 0; process < telling.log.size(); ++process) {
    for (const LogRecord& record : telling.log[process]) {
      lines.push_back(Format("%zu.%d ", process + 1, record.role) + record.text);
    }
  }
  return lines;
}

// What each thread wrote, by its process; which thread is which does not matter.
std::vector<Lines> ThreadLines(const Telling& telling) {
  std::vector<Lines> threads;
  for (size_t process = 0; process < telling.log.size(); ++process) {
    std::map<int, Lines> by_role;
    for (const LogRecord& record : telling.log[process]) {
      by_role[record.role].push_back(Format("%zu ", process + 1) + record.text);
    }
    for (auto& [role, lines] : by_role) threads.push_back(std::move(lines));
  }
  std::ranges::sort(threads);
  return threads;
}

size_t CommonBegin(const Lines& left, const Lines& right) {
  return static_cast<size_t>(std::ranges::mismatch(left, right).in1 - left.begin());
}

std::string Excerpt(const char* side, const Lines& lines, size_t at) {
  std::string text = Format("    %s:\n", side);
  const size_t begin = at > kLinesBefore ? at - kLinesBefore : 0;
  for (size_t i = begin; i < std::min(lines.size(), at + kLinesAfter + 1); ++i) {
    std::string line = lines[i];
    std::erase_if(line, [](char c) { return c == '\r' || c == '\n'; });
    text += (i == at ? "    > " : "      ") + story::FromLogCodePage(line) + "\n";
  }
  return at < lines.size() ? text : text + "    > (nothing more)\n";
}

std::string FirstDifference(const char* what, const Lines& wine, const Lines& notebook) {
  const size_t at = CommonBegin(wine, notebook);
  if (at == wine.size() && at == notebook.size()) return {};
  return Format("  %s, line %zu:\n", what, at + 1) + Excerpt("Wine", wine, at) +
         Excerpt("virtual notebook", notebook, at);
}

// Threads of one side that the other side does not have.
std::vector<Lines> Unmatched(const std::vector<Lines>& threads, const std::vector<Lines>& others) {
  std::vector<Lines> unmatched;
  std::ranges::set_difference(threads, others, std::back_inserter(unmatched));
  return unmatched;
}

struct Pair {
  Lines left;
  Lines right;
};

// The threads that differ, each with the one of the other side that it has most in
// common with at the begin.
std::vector<Pair> DifferentThreads(const Telling& left, const Telling& right) {
  std::vector<Lines> others = Unmatched(ThreadLines(right), ThreadLines(left));
  std::vector<Pair> pairs;
  for (Lines& thread : Unmatched(ThreadLines(left), ThreadLines(right))) {
    const auto best = std::ranges::max_element(
        others, {}, [&](const Lines& other) { return CommonBegin(thread, other); });
    pairs.push_back({std::move(thread), best == others.end() ? Lines{} : std::move(*best)});
    if (best != others.end()) others.erase(best);
  }
  for (Lines& thread : others) pairs.push_back({{}, std::move(thread)});
  return pairs;
}

}  // namespace

Telling TellingOf(const StoryReport& report, std::string_view log) {
  Telling telling{.log = ComparableLog(log), .facts = {}};
  Lines& facts = telling.facts;
  for (const auto& command : report.commands) {
    facts.push_back(Format("command %u %s", command.command_id, command.set ? "set" : "query"));
    for (const uint8_t byte : command.payload) facts.back() += Format(" %02X", byte);
    facts.back() += Format(", radio %d -> %d", command.radio_before, command.radio_after);
  }
  facts.push_back(Format("radio %d -> %d", report.radio_before, report.radio_after));
  for (const auto& [process, status] : report.status_reports) {
    facts.push_back(Format("status %u, controls 0x%X, exit code %u, check point %u, wait hint %u",
                           status.dwCurrentState, status.dwControlsAccepted, status.dwWin32ExitCode,
                           status.dwCheckPoint, status.dwWaitHint));
  }
  for (const auto& refused : report.refused_controls) {
    facts.push_back(Format("control %u, event type %u, refused with %u", refused.control,
                           refused.event_type, refused.error));
  }
  static const std::regex kProcess(R"(/pid -?\d+)");
  for (const std::string& launch : report.launches) {
    facts.push_back("launched " + std::regex_replace(launch, kProcess, "/pid <process>"));
  }
  for (const auto& fault : report.fired_faults) {
    facts.push_back(Format("fault %s, call %u, 0x%X", fault.call.c_str(), fault.nth, fault.code));
  }
  for (const auto& fault : report.faults_not_fired) facts.push_back("not fired " + fault.call);
  for (const ProcessEnd& end : report.processes) facts.push_back(EndText(end));
  for (const std::string& note : report.notes) facts.push_back("note " + note);
  facts.push_back(report.deadlock.empty() ? "not stuck" : "stuck");
  return telling;
}

Likeness Compare(const Telling& left, const Telling& right) {
  if (left.facts != right.facts) return Likeness::kDiffers;
  if (WholeLines(left) == WholeLines(right)) return Likeness::kWhole;
  return ThreadLines(left) == ThreadLines(right) ? Likeness::kThreads : Likeness::kDiffers;
}

size_t RecordsFromFirstDifference(const Telling& left, const Telling& right) {
  size_t records = left.facts == right.facts ? 0 : 1;
  for (const auto& [mine, other] : DifferentThreads(left, right)) {
    records += std::max(mine.size(), other.size()) - CommonBegin(mine, other);
  }
  return records;
}

std::string Difference(const Telling& wine, const Telling& notebook) {
  std::string text = FirstDifference("what was seen from outside", wine.facts, notebook.facts);
  for (const auto& [mine, other] : DifferentThreads(wine, notebook)) {
    text += FirstDifference("one thread's log", mine, other);
  }
  return text;
}

}  // namespace nuvelta::wine_notebook
