// One strip: the axis, marks, runs, the modem's commands, the radio, and a lane for each
// thread.
#include <algorithm>
#include <array>
#include <map>
#include <utility>

#include "support/html_text.h"
#include "support/timeline_svg.h"

namespace nuvelta::support {

namespace {

constexpr int kRow = 18;
constexpr int kLetter = 6;  // about as wide as one is
constexpr int kLabelRoom = 6;
constexpr int kTickLength = 11;
constexpr int kLaneGap = 7;
constexpr int kScopeRow = 16;
constexpr uint32_t kMostScopeRows = 10;
constexpr size_t kMostLanes = 16;
constexpr size_t kMarkRows = 4;
constexpr int kBetweenTimes = 84;
constexpr int kLastTime = kDrawingWidth - 74;
constexpr size_t kLongestTitle = 200;
constexpr size_t kLongestMark = 60;

// As much of a label as fits; a scope's class goes first.
std::string FitLabel(const std::string& label, int width) {
  const auto fits = [&](const std::string& text) {
    return static_cast<int>(text.size()) * kLetter + kLabelRoom <= width;
  };
  if (fits(label)) return label;
  const size_t colons = label.rfind("::");
  std::string own = colons == std::string::npos ? label : label.substr(colons + 2);
  if (fits(own)) return own;
  constexpr int kLeast = 5;
  const int letters = (width - kLabelRoom) / kLetter - 1;
  return letters < kLeast ? std::string() : Shorten(own, static_cast<size_t>(letters));
}

// What a mark says, short: its details are in its title.
std::string MarkLabel(const TimelineMark& mark) {
  const bool is_minor = mark.kind == MarkKind::kOther || mark.kind == MarkKind::kRetry;
  const std::string text =
      is_minor ? mark.text.substr(0, mark.text.find_first_of(":;")) : mark.text;
  return Shorten(text, kLongestMark);
}

class StripDrawing {
 public:
  StripDrawing(const TimelineModel& model, const Strip& strip)
      : m_model(model), m_strip(strip), m_process(model.processes[strip.process]) {}

  std::string Draw() {
    DrawTimes();
    DrawMarks();
    DrawRuns();
    DrawCommands();
    DrawRadio();
    DrawLanes();
    if (!m_strip.pauses.empty()) m_y += kRow;
    std::string svg;
    Put(svg, "<svg viewBox=\"0 0 ", kDrawingWidth, " ", m_y, "\" role=\"img\" aria-label=\"Lines ",
        m_model.LineAt(m_strip.begin).number, " to ", m_model.LineAt(m_strip.end - 1).number,
        ", drawn; the same lines follow as text\">");
    Put(svg, "<path class=\"guide\" d=\"");
    for (const int x : m_guides) Put(svg, "M", x, " 16V", m_y);
    svg += "\"/>";
    DrawPauses(svg);
    return svg + m_out + "</svg>\n";
  }

 private:
  int X(uint64_t line) const { return kNamesWidth + m_strip.XOf(line); }
  // Where something that reaches over the strip's edges is drawn.
  int From(uint64_t begin) const { return X(std::max(begin, m_strip.begin)); }
  int To(uint64_t end) const {
    return end >= m_strip.end ? kNamesWidth + m_strip.Width() : X(end) + 4;
  }
  bool Touches(uint64_t begin, uint64_t end) const {
    return begin < m_strip.end && end >= m_strip.begin;
  }
  const TimelineLine& LineAt(uint64_t index) const { return m_model.LineAt(index); }

  void Name(std::string_view name, int y) {
    Put(m_out, "<text class=\"name\" x=\"4\" y=\"", y, "\">", EscapeHtml(name), "</text>");
  }

  // `at`: the line that a click shows.
  void OpenGroup(std::string_view classes, uint64_t at, std::string_view title) {
    Put(m_out, "<g class=\"", classes, "\" data-n=\"", std::max(at, m_model.first), "\"><title>",
        EscapeHtml(title), "</title>");
  }

  void Box(int x, int y, int width, int height) {
    Put(m_out, "<rect x=\"", x, "\" y=\"", y, "\" width=\"", width, "\" height=\"", height, "\"/>");
  }

  void Label(int x, int y, std::string_view text) {
    if (text.empty()) return;
    Put(m_out, "<text x=\"", x, "\" y=\"", y, "\">", EscapeHtml(text), "</text>");
  }

  void DrawTimes() {
    Name("time", 13);
    int free = 0;
    std::string_view shown;
    for (uint64_t at = m_strip.begin; at < m_strip.end; ++at) {
      const TimelineLine& line = LineAt(at);
      if (X(at) < free || X(at) > kLastTime || line.time == shown) continue;
      Put(m_out, "<text class=\"time\" x=\"", X(at), "\" y=\"13\">", EscapeHtml(ClockOf(line.time)),
          "</text>");
      m_guides.push_back(X(at));
      free = X(at) + kBetweenTimes;
      shown = line.time;
    }
    m_y = kRow + 2;
  }

  void DrawPauses(std::string& svg) {
    for (const FoldedPause& pause : m_strip.pauses) {
      const auto gap = LineAt(pause.before).gap;
      const std::string text = gap ? DurationText(*gap) : "clock set back";
      Put(svg, "<g class=\"pause\"><rect x=\"", kNamesWidth + pause.x, "\" y=\"16\" width=\"",
          pause.width, "\" height=\"", m_y - 16, "\"/><text x=\"",
          kNamesWidth + pause.x + pause.width / 2, "\" y=\"", m_y - 4, "\">", text, "</text></g>");
    }
  }

  void DrawMarks() {
    std::array<int, kMarkRows> free{};
    int rows = 0;
    for (const TimelineMark& mark : m_model.marks) {
      if (!Touches(mark.at, mark.at)) continue;
      const std::string label = MarkLabel(mark);
      const int width = static_cast<int>(label.size()) * kLetter + 16;
      const int x = X(mark.at) + 2;
      auto row = std::ranges::find_if(free, [&](int end) { return end <= x - 6; });
      const bool has_room = row != free.end();
      if (!has_room) row = std::ranges::min_element(free);
      const int index = static_cast<int>(row - free.begin());
      rows = std::max(rows, index + 1);
      const int y = m_y + index * kRow + kRow / 2;
      OpenGroup(std::string("mark ") + ClassOf(mark.kind), mark.at,
                mark.text + "\n" + LineTitle(m_model, mark.at));
      m_out += MarkShape(mark.kind, x, y);
      if (has_room && x + width <= kDrawingWidth) {
        Label(x + 8, y + 4, label);
        *row = x + width;
      }
      m_out += "</g>";
    }
    if (rows == 0) return;
    Name("events", m_y + 13);
    m_y += rows * kRow + 2;
  }

  void DrawRuns() {
    bool found = false;
    for (const TimelineRun& run : m_model.runs) {
      if (!Touches(run.begin, run.end)) continue;
      found = true;
      const int x = From(run.begin);
      const int width = To(run.end) - x;
      OpenGroup(std::string("run ") + ClassOf(VerdictOf(run)), run.begin, RunTitle(run));
      Box(x, m_y, width, kRow - 3);
      std::string label = "unfinished run";
      if (run.run) {
        label = "run " + std::to_string(run.run->number) + ": " + InfoOf(run.run->cause).id;
      }
      Label(x + 4, m_y + 11, FitLabel(label, width));
      m_out += "</g>";
    }
    if (!found) return;
    Name("runs", m_y + 11);
    m_y += kRow;
  }

  void DrawCommands() {
    bool found = false;
    const std::deque<TimelineCommand>& all = m_model.commands;
    for (auto command = all.begin(); command != all.end(); ++command) {
      if (!Touches(command->begin, command->end)) continue;
      found = true;
      const int x = From(command->begin);
      const int end = To(command->end);
      const auto next = std::next(command);
      const bool has_next = next != all.end() && Touches(next->begin, next->begin);
      const int free = (has_next ? X(next->begin) : kDrawingWidth) - end - 4;
      OpenGroup(command->answered ? "command" : "command failed", command->begin,
                CommandTitle(*command));
      Box(x, m_y, std::max(end - x, 3), kRow - 3);
      Label(x + 3, m_y + 11, FitLabel(command->set ? "set" : "query", end - x));
      Label(end + 4, m_y + 11, FitLabel(command->text, free));
      m_out += "</g>";
    }
    if (!found) return;
    Name("modem", m_y + 11);
    m_y += kRow;
  }

  std::string CommandTitle(const TimelineCommand& command) const {
    std::string title = (command.set ? "set 01 00 00 00: " : "query 00: ") + command.text;
    const TimelineLine& end = LineAt(command.end);
    if (!m_model.Holds(command.begin)) return title;
    const TimelineLine& begin = LineAt(command.begin);
    if (const auto time = MillisecondsBetween(begin.time, end.time)) {
      title += " after " + DurationText(*time);
    }
    Put(title, "\nlines ", begin.number, " to ", end.number);
    return title;
  }

  void DrawRadio() {
    uint64_t from = m_strip.begin;
    while (from < m_strip.end) {
      const auto next = std::ranges::upper_bound(m_model.radio, from, {}, &RadioWord::at);
      const uint64_t to =
          next == m_model.radio.end() ? m_strip.end : std::min(next->at, m_strip.end);
      const auto level = m_model.RadioAt(from);
      const int x = X(from);
      const int width = kNamesWidth + (to == m_strip.end ? m_strip.Width() : m_strip.XOf(to)) - x;
      const std::string text = RadioText(level);
      const char* const kind = !level ? "radio untold" : *level == 1 ? "radio lit" : "radio dark";
      OpenGroup(kind, from, "radio " + text);
      if (level) {
        Box(x, m_y, width, 13);
      } else {
        Put(m_out, "<path d=\"M", x, " ", m_y + 7, "h", width, "\"/>");
      }
      Label(x + 4, m_y + 10, level ? FitLabel(text, width) : "");
      m_out += "</g>";
      from = to;
    }
    Name("radio", m_y + 11);
    m_y += kRow;
  }

  void DrawLanes() {
    std::vector<std::string> lanes;
    std::map<std::string, size_t> lane_of;
    for (uint64_t at = m_strip.begin; at < m_strip.end; ++at) {
      const std::string& thread = LineAt(at).thread;
      if (lane_of.contains(thread)) continue;
      lane_of.emplace(thread, std::min(lanes.size(), kMostLanes));
      if (lanes.size() <= kMostLanes) lanes.push_back(thread);
    }
    for (size_t lane = 0; lane < lanes.size(); ++lane) {
      m_y += kLaneGap;
      Put(m_out, "<path class=\"lane\" d=\"M0 ", m_y - 3, "H", kDrawingWidth, "\"/>");
      const bool others = lane == kMostLanes;
      Name(others ? "other threads" : NameOfThread(lanes[lane]), m_y + 12);
      if (!others) DrawScopes(lanes[lane]);
      for (uint64_t at = m_strip.begin; at < m_strip.end; ++at) {
        if (lane_of.at(LineAt(at).thread) == lane) DrawTick(at);
      }
      m_y += kTickLength + 3;
    }
  }

  std::string NameOfThread(const std::string& thread) const {
    const auto role = m_process.roles.find(thread);
    return std::string(
               NameOf(role == m_process.roles.end() ? ThreadRole::kUnknown : role->second)) +
           " " + thread;
  }

  void DrawScopes(const std::string& thread) {
    uint32_t rows = 0;
    for (const Scope& scope : m_model.scopes) {
      if (scope.thread != thread || !Touches(scope.begin, scope.end)) continue;
      const uint32_t row = std::min(scope.depth, kMostScopeRows - 1);
      rows = std::max(rows, row + 1);
      const int x = From(scope.begin);
      const int y = m_y + static_cast<int>(row) * kScopeRow;
      const int width = std::max(To(scope.end) - x, 3);
      OpenGroup(scope.how == ScopeEnd::kExit ? "scope" : "scope endless", scope.begin,
                ScopeTitle(scope));
      Box(x, y, width, kScopeRow - 3);
      Label(x + 3, y + 10, FitLabel(scope.name, width));
      m_out += "</g>";
    }
    m_y += static_cast<int>(rows) * kScopeRow;
  }

  std::string ScopeTitle(const Scope& scope) const {
    std::string title = scope.name;
    if (m_model.Holds(scope.begin)) {
      const TimelineLine& begin = LineAt(scope.begin);
      const TimelineLine& end = LineAt(scope.end);
      const auto time = MillisecondsBetween(begin.time, end.time);
      Put(title, time ? ", " + DurationText(*time) : std::string(), "\nlines ", begin.number,
          " to ", end.number);
    }
    if (scope.how == ScopeEnd::kMissing) title += "; without an exit line";
    if (scope.how == ScopeEnd::kOpen) title += "; the log ends in it";
    return title;
  }

  void DrawTick(uint64_t at) {
    const TimelineLine& line = LineAt(at);
    const char* kind = "tick";
    if (line.text.starts_with("h :")) kind = "tick trace";
    if (line.text.starts_with("e :")) kind = "tick error";
    if (!line.known) kind = "tick foreign";
    Put(m_out, "<path class=\"", kind, "\" data-n=\"", at, "\" d=\"M", X(at) + 2, " ", m_y, "v",
        kTickLength, "\"><title>", LineTitle(m_model, at), "\n",
        EscapeHtml(Shorten(line.text, kLongestTitle)), "</title></path>");
  }

  const TimelineModel& m_model;
  const Strip& m_strip;
  const TimelineProcess& m_process;
  std::string m_out;
  std::vector<int> m_guides;  // where times stand
  int m_y = 0;                // of the next row
};

}  // namespace

std::string DrawStrip(const TimelineModel& model, const Strip& strip) {
  return StripDrawing(model, strip).Draw();
}

}  // namespace nuvelta::support
