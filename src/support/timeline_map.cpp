// All strips beside each other, small: marks, runs and the radio.
#include <algorithm>

#include "support/html_text.h"
#include "support/timeline_svg.h"

namespace nuvelta::support {

namespace {

constexpr double kSeam = 8;  // between two strips
constexpr double kMostForSeams = 400;
constexpr int kTimesY = 13;
constexpr int kMarksY = 30;
constexpr int kRunsY = 42;
constexpr int kMapRunHeight = 22;
constexpr int kRadioY = 72;
constexpr int kMapHeight = 92;
constexpr int kBetweenMapTimes = 74;
constexpr int kRunNumberWidth = 18;

class MapDrawing {
 public:
  MapDrawing(const TimelineModel& model, const std::vector<Strip>& strips)
      : m_model(model), m_strips(strips) {
    double total = 0;
    for (const Strip& strip : strips) total += strip.Width();
    const auto seams = static_cast<double>(std::max<size_t>(strips.size(), 2) - 1);
    const double seam = std::min(kSeam, kMostForSeams / seams);
    m_scale = std::min(1.0, (kDrawingWidth - kNamesWidth - kSeam - seams * seam) / total);
    double at = kNamesWidth;
    for (const Strip& strip : strips) {
      m_begins.push_back(at);
      at += strip.Width() * m_scale + seam;
    }
  }

  std::string Draw() {
    Put(m_out, "<svg viewBox=\"0 0 ", kDrawingWidth, " ", kMapHeight,
        "\" aria-label=\"The whole log at a glance\">");
    Name("time", kTimesY);
    Name("events", kMarksY + 4);
    Name("runs", kRunsY + 15);
    Name("radio", kRadioY + 10);
    DrawSeams();
    DrawMarks();
    DrawRuns();
    DrawRadio();
    return m_out + "</svg>\n";
  }

 private:
  size_t StripOf(uint64_t line) const {
    const auto after = std::ranges::upper_bound(m_strips, line, {}, &Strip::begin);
    return static_cast<size_t>(std::max<std::ptrdiff_t>(after - m_strips.begin(), 1) - 1);
  }
  int X(uint64_t line) const {
    const size_t strip = StripOf(std::max(line, m_model.first));
    const uint64_t at = std::max(line, m_model.first);
    return static_cast<int>(m_begins[strip] + m_strips[strip].XOf(at) * m_scale);
  }
  int EndOf(size_t strip) const {
    return static_cast<int>(m_begins[strip] + m_strips[strip].Width() * m_scale);
  }

  void Name(const char* name, int y) {
    Put(m_out, "<text class=\"name\" x=\"4\" y=\"", y, "\">", name, "</text>");
  }

  void DrawSeams() {
    int free = 0;
    for (size_t i = 0; i < m_strips.size(); ++i) {
      const int x = static_cast<int>(m_begins[i]);
      const bool new_process = i > 0 && m_strips[i].process != m_strips[i - 1].process;
      if (i > 0) {
        Put(m_out, "<path class=\"", new_process ? "seam process" : "seam", "\" d=\"M",
            (EndOf(i - 1) + x) / 2, " 18V", kMapHeight - 4, "\"/>");
      }
      if (x < free || x + kBetweenMapTimes > kDrawingWidth) continue;
      Put(m_out, "<text class=\"time\" x=\"", x, "\" y=\"", kTimesY, "\">",
          ClockOf(m_model.LineAt(m_strips[i].begin).time), "</text>");
      free = x + kBetweenMapTimes;
    }
  }

  void OpenLink(uint64_t line, std::string_view classes, std::string_view title) {
    Put(m_out, "<a href=\"#strip", StripOf(line) + 1, "\" class=\"", classes, "\"><title>",
        EscapeHtml(title), "</title>");
  }

  void DrawMarks() {
    for (const TimelineMark& mark : m_model.marks) {
      if (mark.kind == MarkKind::kRetry) continue;
      OpenLink(mark.at, std::string("mark ") + ClassOf(mark.kind),
               mark.text + "\n" + LineTitle(m_model, mark.at));
      m_out += MarkShape(mark.kind, X(mark.at), kMarksY) + "</a>";
    }
  }

  void DrawRuns() {
    for (const TimelineRun& run : m_model.runs) {
      const int x = X(run.begin);
      const int width = std::max(X(run.end) - x, 4);
      OpenLink(std::max(run.begin, m_model.first), std::string("run ") + ClassOf(VerdictOf(run)),
               RunTitle(run));
      Put(m_out, "<rect x=\"", x, "\" y=\"", kRunsY, "\" width=\"", width, "\" height=\"",
          kMapRunHeight, "\"/>");
      if (run.run && width >= kRunNumberWidth) {
        Put(m_out, "<text x=\"", x + 4, "\" y=\"", kRunsY + 15, "\">", run.run->number, "</text>");
      }
      m_out += "</a>";
    }
  }

  // From one word of the log to the next.
  void DrawRadio() {
    uint64_t from = m_model.first;
    while (from < m_model.End()) {
      const auto next = std::ranges::upper_bound(m_model.radio, from, {}, &RadioWord::at);
      const uint64_t to =
          next == m_model.radio.end() ? m_model.End() : std::min(next->at, m_model.End());
      const auto level = m_model.RadioAt(from);
      const int x = X(from);
      const int width = (to == m_model.End() ? EndOf(m_strips.size() - 1) : X(to)) - x;
      const char* const kind = !level ? "radio untold" : *level == 1 ? "radio lit" : "radio dark";
      Put(m_out, "<g class=\"", kind, "\"><title>radio ", RadioText(level), "</title>");
      if (level) {
        Put(m_out, "<rect x=\"", x, "\" y=\"", kRadioY, "\" width=\"", width, "\" height=\"13\"/>");
      } else {
        Put(m_out, "<path d=\"M", x, " ", kRadioY + 7, "h", width, "\"/>");
      }
      m_out += "</g>";
      from = to;
    }
  }

  const TimelineModel& m_model;
  const std::vector<Strip>& m_strips;
  double m_scale = 1;
  std::vector<double> m_begins;  // where each strip begins
  std::string m_out;
};

}  // namespace

std::string DrawMap(const TimelineModel& model, const std::vector<Strip>& strips) {
  return strips.empty() ? std::string() : MapDrawing(model, strips).Draw();
}

}  // namespace nuvelta::support
