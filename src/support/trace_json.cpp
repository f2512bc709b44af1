#include "support/trace_json.h"

#include <algorithm>
#include <charconv>
#include <nlohmann/json.hpp>
#include <utility>
#include <vector>

#include "support/printable.h"
#include "support/timeline_svg.h"

namespace nuvelta::support {

namespace {

using TraceEvent = nlohmann::ordered_json;

// Rows beside those of the threads, whose ids are the system's.
constexpr uint32_t kRunsRow = 1;
constexpr uint32_t kModemRow = 2;

// Microseconds from the first line on. The log has milliseconds only: what it writes in
// one of them stands in its order, a microsecond apart. When the clock is set back, time
// goes on from there.
std::vector<int64_t> TimesOf(const TimelineModel& model) {
  std::vector<int64_t> times;
  times.reserve(model.lines.size());
  int64_t millisecond = 0;
  std::string_view before;
  for (const TimelineLine& line : model.lines) {
    const int64_t gap = before.empty() ? 0 : MillisecondsBetween(before, line.time).value_or(0);
    millisecond += gap;
    times.push_back(times.empty() ? 0 : std::max(millisecond * 1000, times.back() + 1));
    before = line.time;
  }
  return times;
}

uint32_t RowOf(std::string_view thread) {
  uint32_t id = 0;
  std::from_chars(thread.data(), thread.data() + thread.size(), id, 16);
  return id;
}

class TraceWriter {
 public:
  explicit TraceWriter(const TimelineModel& model) : m_model(model), m_times(TimesOf(model)) {}

  std::string Write() {
    m_out = std::string(kTraceMark) +
            ",\"log\":" + TraceEvent(Printable(m_model.verdict.name)).dump() +
            ",\"lines_left_out\":" + std::to_string(m_model.first) + "},\"traceEvents\":[";
    for (size_t process = 0; process < m_model.processes.size(); ++process) NameRows(process);
    for (const Scope& scope : m_model.scopes) {
      TraceEvent args = {{"line", NumberOf(scope.begin)}, {"to_line", NumberOf(scope.end)}};
      if (scope.how != ScopeEnd::kExit) args["exit"] = "missing";
      Span(scope.name, "scope", scope.begin, scope.end, RowOf(scope.thread), std::move(args));
    }
    for (const TimelineRun& run : m_model.runs) {
      const std::string name = run.run ? InfoOf(run.run->cause).id : "unfinished";
      Span(name, "run", run.begin, run.end, kRunsRow, {{"title", RunTitle(run)}});
    }
    for (const TimelineCommand& command : m_model.commands) {
      Span((command.set ? "set: " : "query: ") + command.text, "command", command.begin,
           command.end, kModemRow, {{"line", NumberOf(command.begin)}});
    }
    for (const TimelineMark& mark : m_model.marks) {
      TraceEvent event = Event(mark.text, ClassOf(mark.kind), "i", mark.at);
      event["tid"] = RowOf(m_model.LineAt(mark.at).thread);
      event["s"] = "p";
      event["args"] = {{"line", NumberOf(mark.at)}};
      Put(event);
    }
    for (const RadioWord& word : m_model.radio) {
      if (!word.level || !m_model.Holds(word.at)) continue;
      TraceEvent event = Event("radio level", "radio", "C", word.at);
      event["args"] = {{"level", *word.level}};
      Put(event);
    }
    return m_out + "\n]}\n";
  }

 private:
  uint64_t Kept(uint64_t line) const { return std::max(line, m_model.first); }
  int64_t TimeAt(uint64_t line) const { return m_times[Kept(line) - m_model.first]; }
  uint64_t NumberOf(uint64_t line) const { return m_model.LineAt(Kept(line)).number; }

  size_t ProcessAt(uint64_t line) const {
    const auto later = std::ranges::upper_bound(m_model.processes, line, {}, &TimelineProcess::end);
    return static_cast<size_t>(later - m_model.processes.begin()) + 1;
  }

  void Put(const TraceEvent& event) {
    m_out += m_out.ends_with('[') ? "\n" : ",\n";
    m_out += event.dump();
  }

  void NameRow(size_t process, const char* what, uint32_t row, const std::string& name) {
    Put({{"name", what},
         {"ph", "M"},
         {"pid", process + 1},
         {"tid", row},
         {"args", {{"name", name}}}});
  }

  void NameRows(size_t index) {
    const TimelineProcess& process = m_model.processes[index];
    NameRow(index, "process_name", 0, "service, " + Printable(process.process.begin.file));
    NameRow(index, "thread_name", kRunsRow, "runs");
    NameRow(index, "thread_name", kModemRow, "modem");
    for (const auto& [thread, role] : process.roles) {
      NameRow(index, "thread_name", RowOf(thread), NameOf(role));
    }
  }

  TraceEvent Event(const std::string& name, const char* category, const char* phase,
                   uint64_t line) const {
    return {{"name", name},
            {"cat", category},
            {"ph", phase},
            {"ts", TimeAt(line)},
            {"pid", ProcessAt(Kept(line))}};
  }

  void Span(const std::string& name, const char* category, uint64_t begin, uint64_t end,
            uint32_t row, TraceEvent args) {
    TraceEvent event = Event(name, category, "X", begin);
    event["dur"] = TimeAt(end) - TimeAt(begin);
    event["tid"] = row;
    event["args"] = std::move(args);
    Put(event);
  }

  const TimelineModel& m_model;
  const std::vector<int64_t> m_times;
  std::string m_out;
};

}  // namespace

std::string TimelineTrace(const TimelineModel& model) { return TraceWriter(model).Write(); }

}  // namespace nuvelta::support
