#include <cstdarg>
#include <cstdio>
#include <utility>

#include "support/explain.h"
#include "support/fleet.h"
#include "support/printable.h"
#include "support/run_text.h"

namespace nuvelta::support {

namespace {

std::string Format(const char* format, ...) __attribute__((format(printf, 1, 2)));
std::string Format(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  va_list again;
  va_copy(again, arguments);
  const int size = std::vsnprintf(nullptr, 0, format, arguments);
  std::string text(size < 0 ? 0 : static_cast<size_t>(size), '\0');
  std::vsnprintf(text.data(), text.size() + 1, format, again);
  va_end(again);
  va_end(arguments);
  return text;
}

// "00:58:46.000" of "2026-11-16 00:58:46.000".
std::string TimeOfDay(const std::string& time) { return time.size() > 11 ? time.substr(11) : time; }

std::string Counted(uint64_t count, const char* one, const char* many) {
  return std::to_string(count) + ' ' + (count == 1 ? one : many);
}

class TextExplanation final : public Explanation {
 public:
  TextExplanation(Print print, Print complain, bool colour)
      : m_print(std::move(print)), m_complain(std::move(complain)), m_colour(colour) {}

  void OnNotebook(const NotebookLogs& logs) override {
    if (m_notebooks++ > 0) m_print("\n");
    m_print(Printable(logs.name) + "\n");
  }

  void OnProcess(const Process& begun) override {
    if (begun.IsForeign()) return;
    m_print("  " + Printable(begun.begin.file) + "\n");
    if (!begun.version.empty() || !begun.built.empty()) {
      m_print("    service " + (begun.version.empty() ? "?" : Printable(begun.version)) +
              ", built " + Printable(begun.built) + "\n");
    }
    m_day.clear();
    m_file = begun.begin.file;
  }

  void OnTrigger(const Trigger& trigger) override {
    Event(trigger.at, std::string("trigger: ") + NameOf(trigger.kind));
  }

  void OnNote(const Note& note) override {
    // The runs that follow tell it.
    if (note.kind != NoteKind::kRetry) Event(note.at, TextOf(note));
  }

  void OnRun(const Run& run) override {
    std::string chain;
    for (const ChainLink& link : DecisionChain(run)) {
      chain += Format("%28s%-14s %s\n", "", link.label.c_str(), link.text.c_str());
    }
    if (m_repeated > 0 && chain == m_chain && run.cause == m_cause) {
      ++m_repeated;
      m_last_repeated = run;
      return;
    }
    Flush();
    m_chain = std::move(chain);
    m_cause = run.cause;
    m_repeated = 1;
    PrintRun(run);
  }

  void OnProcessEnds(const Process& process) override {
    Flush();
    if (process.IsForeign()) return;
    const CauseInfo& info = InfoOf(process.cause);
    PrintCounts(process);
    m_print("    " + Verdict(info) + At(process.decided) + "\n");
    m_print(std::string("      reason      ") + info.reason + "\n");
    if (!process.deciding.empty())
      m_print("      line        " + Printable(MessageOf(process.deciding)) + "\n");
    m_print(std::string("      what to do  ") + info.advice + "\n");
  }

  void OnVerdict(const NotebookVerdict& verdict) override {
    m_fleet.Add(verdict);
    const CauseInfo& info = InfoOf(verdict.last.cause);
    m_print("  => " + Verdict(info));
    if (!verdict.since.time.empty()) {
      m_print(" since " + verdict.since.time + " (" + verdict.since.file + ", line " +
              std::to_string(verdict.since.line) + ")");
    }
    m_print("\n");
    PrintRadio(verdict.last);
  }

  void OnProblem(const std::string& what) override { m_complain(Printable(what) + "\n"); }

  void OnEnd() override {
    if (m_fleet.Notebooks() < 2) return;
    m_print("\n" + Counted(m_fleet.Notebooks(), "notebook", "notebooks") + "\n");
    m_print(Format("  %5s  %-22s  %-28s  %-23s  %s\n", "count", "cause", "platform key",
                   "first seen", "last seen"));
    for (const auto& [key, row] : m_fleet.Rows()) {
      m_print(Format("  %5llu  %-22s  %-28s  %-23s  %s\n",
                     static_cast<unsigned long long>(row.count), InfoOf(key.second).id,
                     key.first.empty() ? "-" : Printable(key.first).c_str(), row.first_seen.c_str(),
                     row.last_seen.c_str()));
    }
  }

 private:
  std::string At(const Place& place) const {
    if (place.line == 0) return {};
    const std::string line = ", line " + std::to_string(place.line);
    return place.file == m_file ? line : line + " of " + Printable(place.file);
  }

  std::string Verdict(const CauseInfo& info) const {
    const std::string name =
        m_colour ? ColourOf(info.verdict) + std::string(NameOf(info.verdict)) + "\x1B[0m"
                 : NameOf(info.verdict);
    return name + " (" + info.id + ")";
  }

  void Row(const Place& at, const std::string& text) {
    if (at.file != m_file) m_print("  " + Printable(at.file) + "\n");
    m_file = at.file;
    const std::string day = at.time.substr(0, 10);
    if (day != m_day) m_print("    " + day + "\n");
    m_day = day;
    m_print(Format("    %7llu  %-12s  %s\n", static_cast<unsigned long long>(at.line),
                   TimeOfDay(at.time).c_str(), text.c_str()));
  }

  // The same thing over and over takes one row.
  void Event(const Place& at, const std::string& text) {
    if (text == m_event) {
      ++m_events;
      m_last_event = at;
      return;
    }
    Flush();
    m_event = text;
    m_events = 1;
    Row(at, text);
  }

  void PrintRun(const Run& run) {
    const CauseInfo& info = InfoOf(run.cause);
    Row(run.begin, Format("run %llu, %.3f s: %s, decided in line %llu",
                          static_cast<unsigned long long>(run.number), run.seconds, info.id,
                          static_cast<unsigned long long>(run.decided.line)));
    m_print(m_chain);
  }

  // Closes what was repeated.
  void Flush() {
    if (m_events > 1) Row(m_last_event, "... " + std::to_string(m_events) + " times");
    m_event.clear();
    m_events = 0;
    if (m_repeated > 1) {
      Row(m_last_repeated.begin, "... " + std::to_string(m_repeated) +
                                     " such runs, the last is run " +
                                     std::to_string(m_last_repeated.number) + ", decided in line " +
                                     std::to_string(m_last_repeated.decided.line));
    }
    m_repeated = 0;
    m_chain.clear();
  }

  void PrintCounts(const Process& process) {
    std::string text = Counted(process.triggers, "trigger", "triggers") + ", " +
                       Counted(process.runs, "run", "runs") + ", " +
                       Counted(process.retries, "retry", "retries") + ", " +
                       Counted(process.give_ups, "give-up", "give-ups") + ", " +
                       Counted(process.restarts, "restart", "restarts") +
                       "; modem: " + Counted(process.queries, "query", "queries") + ", " +
                       Counted(process.sets, "set", "sets");
    m_print("    " + text + "\n");
    text = Counted(process.lines, "line", "lines");
    if (process.unknown_lines > 0)
      text += ", " + std::to_string(process.unknown_lines) + " unknown";
    if (process.stray_lines > 0)
      text += ", " + std::to_string(process.stray_lines) + " outside of any record";
    if (!process.has_begin && process.lines > 0) text += "; the beginning is missing";
    if (process.unfinished.line != 0) text += "; ends in a run";
    if (process.ends_in_mid_line) text += "; ends in the middle of a line";
    m_print("    " + text + "\n");
  }

  void PrintRadio(const Process& process) {
    if (!process.radio) return;
    m_print(Format("     the modem's last word on the radio: level %d (%s), %s%s\n", *process.radio,
                   *process.radio == 1 ? "on" : "not on", process.radio_at.time.c_str(),
                   At(process.radio_at).c_str()));
  }

  const Print m_print;
  const Print m_complain;
  const bool m_colour;
  Fleet m_fleet;
  uint64_t m_notebooks = 0;
  std::string m_day;
  std::string m_file;  // the part whose lines are numbered
  // The run at hand, which may come again, and its like.
  std::string m_chain;
  Cause m_cause{};
  uint64_t m_repeated = 0;
  Run m_last_repeated;
  std::string m_event;
  uint64_t m_events = 0;
  Place m_last_event;
};

}  // namespace

std::unique_ptr<Explanation> MakeTextExplanation(Print print, Print complain, bool colour) {
  return std::make_unique<TextExplanation>(std::move(print), std::move(complain), colour);
}

}  // namespace nuvelta::support
