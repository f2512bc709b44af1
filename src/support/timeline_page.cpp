#include "support/timeline_page.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "support/html_text.h"
#include "support/printable.h"
#include "support/run_text.h"
#include "support/timeline_layout.h"
#include "support/timeline_style.h"
#include "support/timeline_svg.h"

namespace nuvelta::support {

namespace {

// So many runs of one kind in a row take three rows of the table.
constexpr size_t kRowsWorthFolding = 4;
constexpr size_t kDay = 10;  // "2026-11-16"

std::string EscapedName(std::string_view text) { return EscapeHtml(Printable(text)); }

std::string VerdictText(Cause cause) {
  const CauseInfo& info = InfoOf(cause);
  return std::string(NameOf(info.verdict)) + " (" + info.id + ")";
}

std::string Chip(Cause cause) {
  std::string chip;
  Put(chip, "<span class=\"chip ", ClassOf(InfoOf(cause).verdict), "\">", VerdictText(cause),
      "</span>");
  return chip;
}

std::string CountText(uint64_t count, const char* one, const char* many) {
  return std::to_string(count) + ' ' + (count == 1 ? one : many);
}

class Page {
 public:
  explicit Page(const TimelineModel& model) : m_model(model), m_strips(LayOut(model)) {}

  std::string Make() {
    PutHead();
    PutVerdict();
    PutMap();
    PutRuns();
    for (size_t process = 0; process < m_model.processes.size(); ++process) PutProcess(process);
    PutFoot();
    return std::move(m_out);
  }

 private:
  void PutHead() {
    const std::string name = EscapedName(m_model.verdict.name);
    Put(m_out, kPageMark, "<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n",
        "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n",
        "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; ",
        "style-src 'unsafe-inline'; script-src '", kTimelineScriptHash, "'\">\n<title>",
        VerdictText(m_model.verdict.last.cause), ": ", name, "</title>\n<style>", kTimelineStyle,
        "</style>\n</head>\n<body>\n<header>\n<h1>Timeline of ", name, "</h1>\n");
  }

  // The line of the log, as a link when it is in the page.
  std::string LinkTo(const Place& place) const {
    std::string text = "line " + std::to_string(place.line);
    const auto index = m_model.IndexOf(place);
    if (!index) return text;
    std::string link;
    Put(link, "<a href=\"#n", *index, "\">", text, "</a>");
    return link;
  }

  std::string PlaceText(const Place& place) const {
    std::string text;
    Put(text, place.time, " (", EscapedName(place.file), ", ", LinkTo(place), ")");
    return text;
  }

  void PutRow(const char* name, const std::string& html) {
    Put(m_out, "<dt>", name, "</dt><dd>", html, "</dd>\n");
  }

  void PutVerdict() {
    const NotebookVerdict& verdict = m_model.verdict;
    const CauseInfo& info = InfoOf(verdict.last.cause);
    Put(m_out, "<section class=\"verdict ", ClassOf(info.verdict), "\">\n<strong>",
        NameOf(info.verdict), "</strong> <code>", info.id, "</code>\n<dl>\n");
    PutRow("Reason", EscapeHtml(info.reason));
    if (!verdict.last.deciding.empty()) {
      PutRow("Decided by",
             "<code>" + EscapeHtml(MessageInOneLine(verdict.last.deciding)) + "</code>");
    }
    if (verdict.last.decided.line != 0) PutRow("At", PlaceText(verdict.last.decided));
    if (verdict.since.line != 0 && verdict.since != verdict.last.decided) {
      PutRow("Since", PlaceText(verdict.since));
    }
    if (verdict.last.radio) {
      PutRow("The modem's last word on the radio",
             RadioText(verdict.last.radio) + ", " + PlaceText(verdict.last.radio_at));
    }
    PutRow("What to do", EscapeHtml(info.advice));
    Put(m_out, "</dl>\n</section>\n</header>\n<main>\n");
    for (const std::string& problem : m_model.problems) {
      Put(m_out, "<p class=\"problem\">", EscapeHtml(problem), "</p>\n");
    }
    PutLimits();
  }

  void PutLimits() {
    if (m_model.first > 0) {
      Put(m_out, "<p class=\"problem\">The page shows the last ", m_model.lines.size(), " of ",
          m_model.End(), " lines. What came before counts for the verdict only.</p>\n");
    }
    if (m_model.processes_left_out > 0) {
      Put(m_out, "<p class=\"problem\">", m_model.processes_left_out,
          " earlier processes are left out.</p>\n");
    }
  }

  void PutMap() {
    if (m_strips.empty()) return;
    Put(m_out, "<h2>At a glance</h2>\n<div class=\"scroll\">\n", DrawMap(m_model, m_strips),
        "</div>\n<ul class=\"legend\">\n");
    const std::array<std::pair<MarkKind, const char*>, 5> kinds{
        {{MarkKind::kTrigger, "trigger of a task"},
         {MarkKind::kPower, "sleep and resume"},
         {MarkKind::kService, "service starts or ends"},
         {MarkKind::kTrouble, "gives up, restarts or fails"},
         {MarkKind::kOther, "anything else"}}};
    for (const auto& [kind, text] : kinds) {
      Put(m_out, "<li><svg viewBox=\"0 0 16 14\" aria-hidden=\"true\"><g class=\"mark ",
          ClassOf(kind), "\">", MarkShape(kind, 8, 7), "</g></svg> ", text, "</li>\n");
    }
    Put(m_out, "<li>Runs, and events, lead to where they are drawn in full.</li>\n",
        "<li>The axis follows the lines: each takes a step, and more where time passes; ",
        "pauses of a second and more are folded.</li>\n</ul>\n");
  }

  void PutRuns() {
    Put(m_out, "<h2>Runs of the authentication task</h2>\n");
    if (m_model.runs.empty()) {
      Put(m_out, "<p>There is none.</p>\n");
      return;
    }
    Put(m_out, "<div class=\"scroll\">\n<table>\n<thead><tr>");
    for (const char* column : {"Run", "Begins", "Takes", "Verdict", "Decided in", "Query", "Set"}) {
      Put(m_out, "<th scope=\"col\">", column, "</th>");
    }
    m_out += "</tr></thead>\n<tbody>\n";
    size_t process = m_model.processes.size();
    for (auto run = m_model.runs.begin(); run != m_model.runs.end();) {
      if (const size_t of = ProcessOf(*run); of != process) {
        process = of;
        PutProcessRow(process);
      }
      PutRunRow(*run);
      const auto last = std::find_if_not(++run, m_model.runs.end(),
                                         [](const TimelineRun& next) { return next.repeats; });
      if (static_cast<size_t>(last - run) < kRowsWorthFolding) continue;
      Put(m_out, "<tr><td colspan=\"7\" class=\"dim\">... runs ", run->run->number, " to ",
          (last - 2)->run->number, " went the same way, step by step</td></tr>\n");
      run = last - 1;
    }
    m_out += "</tbody>\n</table>\n</div>\n";
  }

  size_t ProcessOf(const TimelineRun& run) const {
    const auto ends_later =
        std::ranges::upper_bound(m_model.processes, run.end, {}, &TimelineProcess::end);
    return static_cast<size_t>(ends_later - m_model.processes.begin());
  }

  void PutProcessRow(size_t process) {
    if (m_model.processes.size() + m_model.processes_left_out < 2) return;
    Put(m_out, "<tr><th scope=\"rowgroup\" colspan=\"7\">", ProcessName(process), "</th></tr>\n");
  }

  std::string ProcessName(size_t process) const {
    std::string name;
    Put(name, "Process ", m_model.processes_left_out + process + 1, ": ",
        EscapedName(m_model.processes[process].process.begin.file));
    return name;
  }

  void PutRunRow(const TimelineRun& run) {
    if (!run.run) {
      Put(m_out, "<tr><td colspan=\"7\">The log ends in a run, which begins in ",
          m_model.Holds(run.begin) ? LineTitle(m_model, run.begin) : "an earlier line",
          ".</td></tr>\n");
      return;
    }
    const Run& done = *run.run;
    std::string query;
    std::string set;
    for (const ChainLink& link : DecisionChain(done)) {
      if (link.label == "query") query = link.text;
      if (link.label == "set") set = link.text;
    }
    Put(m_out, "<tr><td class=\"number\">", done.number, "</td><td class=\"number\">",
        EscapeHtml(done.begin.time), "</td><td class=\"number\">",
        DurationText(std::llround(done.seconds * 1000)), "</td><td>", Chip(done.cause),
        "</td><td class=\"number\">", LinkTo(done.decided), "</td><td>", EscapeHtml(query),
        "</td><td>", EscapeHtml(set), "</td></tr>\n");
  }

  void PutProcess(size_t index) {
    const Process& process = m_model.processes[index].process;
    Put(m_out, "<h2>", ProcessName(index), "</h2>\n<p class=\"dim\">");
    if (!process.version.empty() || !process.built.empty()) {
      Put(m_out, "Service ", EscapedName(process.version), ", built ", EscapedName(process.built),
          ". ");
    }
    Put(m_out, CountText(process.lines, "line", "lines"), ", ",
        CountText(process.triggers, "trigger", "triggers"), ", ",
        CountText(process.runs, "run", "runs"), ", ",
        CountText(process.retries, "retry", "retries"), ", ",
        CountText(process.give_ups, "give-up", "give-ups"), ", ",
        CountText(process.restarts, "restart", "restarts"), "; ",
        CountText(process.queries, "query", "queries"), " and ",
        CountText(process.sets, "set command", "set commands"), ".");
    PutDoubts(process);
    Put(m_out, "</p>\n<p>", Chip(process.cause), "</p>\n");
    PutStrips(index);
  }

  void PutDoubts(const Process& process) {
    if (process.unknown_lines > 0) {
      Put(m_out, " Lines that the service does not write: ", process.unknown_lines, ".");
    }
    if (process.stray_lines > 0) {
      Put(m_out, " Lines outside of any record: ", process.stray_lines, ".");
    }
    if (!process.has_begin && process.lines > 0) m_out += " The beginning is missing.";
    if (process.ends_in_mid_line) m_out += " It ends in the middle of a line.";
  }

  void PutStrips(size_t process) {
    const auto in_process = [&](size_t i) {
      return i < m_strips.size() && m_strips[i].process == process;
    };
    size_t i = 0;
    while (i < m_strips.size() && !in_process(i)) ++i;
    while (in_process(i)) {
      size_t end = i;
      while (in_process(end) && m_strips[end].repeats) ++end;
      // The last of them is shown: something follows it, or the log ends there.
      const size_t fold_to = end < i + 3 ? i : end - 1;
      if (fold_to > i) {
        Put(m_out, "<details class=\"again\">\n<summary>",
            RunsText(m_strips[i].begin, m_strips[fold_to].begin),
            " as before: ", CountText(fold_to - i, "strip", "strips"), "</summary>\n");
        for (; i < fold_to; ++i) PutStrip(i);
        m_out += "</details>\n";
      }
      PutStrip(i++);
    }
  }

  // The runs that begin in these lines.
  std::string RunsText(uint64_t begin, uint64_t end) const {
    uint64_t first = 0;
    uint64_t last = 0;
    for (const TimelineRun& run : m_model.runs) {
      if (run.begin < begin || run.begin >= end || !run.run) continue;
      if (first == 0) first = run.run->number;
      last = run.run->number;
    }
    if (first == 0) return "Runs";
    std::string text;
    Put(text, "Runs ", first, " to ", last);
    return text;
  }

  void PutStrip(size_t index) {
    const Strip& strip = m_strips[index];
    const TimelineLine& first = m_model.LineAt(strip.begin);
    const TimelineLine& last = m_model.LineAt(strip.end - 1);
    const bool begins_process = index == 0 || m_strips[index - 1].process != strip.process;
    if (!begins_process && (!first.gap || *first.gap > 0)) {
      Put(m_out, "<p class=\"between\">",
          first.gap ? DurationText(*first.gap) + " without a line" : "the clock was set back",
          "</p>\n");
    }
    const bool same_day = first.time.substr(0, kDay) == last.time.substr(0, kDay);
    Put(m_out, "<section id=\"strip", index + 1, "\">\n<h3>", first.time, " to ",
        same_day ? ClockOf(last.time) : std::string_view(last.time), ", lines ", first.number,
        " to ", last.number);
    if (*first.file != m_model.processes[strip.process].process.begin.file) {
      Put(m_out, " of ", EscapedName(*first.file));
    }
    Put(m_out, "</h3>\n<div class=\"scroll\">\n", DrawStrip(m_model, strip), "</div>\n");
    PutLines(strip);
    m_out += "</section>\n";
  }

  void PutLines(const Strip& strip) {
    Put(m_out, "<details>\n<summary>", CountText(strip.end - strip.begin, "record", "records"),
        " as text</summary>\n<ol class=\"log\">\n");
    for (uint64_t at = strip.begin; at < strip.end; ++at) {
      const TimelineLine& line = m_model.LineAt(at);
      const char* kind = "";
      if (line.text.starts_with("h :")) kind = " class=\"trace\"";
      if (line.text.starts_with("e :")) kind = " class=\"error\"";
      Put(m_out, "<li id=\"n", at, "\"", kind, "><i>", line.number, "</i> ", ClockOf(line.time),
          " ", line.thread, " ", EscapeHtml(line.text), "</li>\n");
    }
    m_out += "</ol>\n</details>\n";
  }

  void PutFoot() {
    Put(m_out, "</main>\n<footer class=\"dim\">\n<p>Made by hx2208_support from the service's log ",
        "alone.</p>\n</footer>\n",

        "<div id=\"shown\" aria-live=\"polite\"></div>\n<script>", kTimelineScript,
        "</script>\n</body>\n</html>\n");
  }

  const TimelineModel& m_model;
  const std::vector<Strip> m_strips;
  std::string m_out;
};

}  // namespace

std::string TimelinePage(const TimelineModel& model) { return Page(model).Make(); }

}  // namespace nuvelta::support
