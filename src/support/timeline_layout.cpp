#include "support/timeline_layout.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace nuvelta::support {

namespace {

// What a line takes, and one of a trace scope.
constexpr int kStep = 4;
constexpr int kScopeStep = 6;
constexpr int kFold = 64;
constexpr int64_t kLongPause = 1000;  // milliseconds
// A long pause ends a strip that is at least so full.
constexpr int kFullEnough = 450;
// So little is not left alone in a strip.
constexpr int kWorthCutting = 200;

// For the time before a line: more for more, so that one sees where it goes.
int WidthOf(std::optional<int64_t> gap) {
  if (!gap || *gap == 0) return 0;
  constexpr int kPerDoubling = 4;
  return kPerDoubling * static_cast<int>(std::bit_width(static_cast<uint64_t>(*gap)));
}

int StepOf(const TimelineLine& line) { return line.text.starts_with("h :") ? kScopeStep : kStep; }

bool IsFolded(const TimelineLine& line) { return !line.gap || *line.gap >= kLongPause; }

class StripMaker {
 public:
  explicit StripMaker(const TimelineModel& model) : m_model(model) {}

  void Take(size_t process) {
    const TimelineProcess& lines = m_model.processes[process];
    const uint64_t first = std::max(lines.begin, m_model.first);
    if (first >= lines.end) return;
    Begin(process, first);
    for (uint64_t at = first; at < lines.end; ++at) {
      const TimelineLine& line = m_model.LineAt(at);
      const bool folded = at > first && IsFolded(line);
      const std::optional<uint64_t> run = RunAround(at);
      if (m_strip.x.back() + kScopeStep > kStripWidth) {
        at = WhereToCut(at, run);
        End(at);
        Begin(process, at);
      } else if (folded && !run && m_strip.x.back() >= kFullEnough) {
        End(at);
        Begin(process, at);
      } else if (at > m_strip.begin) {
        Space(at, folded, line);
      }
      m_strip.x.push_back(m_strip.x.back() + StepOf(m_model.LineAt(at)));
    }
    End(lines.end);
  }

  std::vector<Strip> Strips() { return std::move(m_strips); }

 private:
  void Begin(size_t process, uint64_t first) {
    m_strip = {.process = process, .begin = first, .x = {kStep}};
  }

  // x.back() is where the next line stands.
  void Space(uint64_t at, bool folded, const TimelineLine& line) {
    int& x = m_strip.x.back();
    if (folded) m_strip.pauses.push_back({.before = at, .x = x, .width = kFold});
    x += folded ? kFold + kStep : WidthOf(line.gap);
  }

  void End(uint64_t end) {
    m_strip.end = end;
    m_strip.repeats = Repeats();
    m_strips.push_back(std::move(m_strip));
  }

  // Where the run begins that is under way before this line.
  std::optional<uint64_t> RunAround(uint64_t at) const {
    const auto run = std::ranges::lower_bound(m_model.runs, at, {}, &TimelineRun::end);
    if (run == m_model.runs.end() || run->begin >= at) return std::nullopt;
    return run->begin;
  }

  // A full strip rather ends before a run than inside of it.
  uint64_t WhereToCut(uint64_t at, std::optional<uint64_t> run) {
    if (!run || *run <= m_strip.begin || m_strip.XOf(*run) < kWorthCutting) return at;
    m_strip.x.resize(*run - m_strip.begin + 1);
    std::erase_if(m_strip.pauses, [&](const FoldedPause& pause) { return pause.before >= *run; });
    return *run;
  }

  bool Repeats() const {
    bool found = false;
    for (const TimelineRun& run : m_model.runs) {
      if (run.end < m_strip.begin || run.begin >= m_strip.end) continue;
      if (!run.repeats) return false;
      found = true;
    }
    return found && std::ranges::none_of(m_model.marks, [&](const TimelineMark& mark) {
             return mark.at >= m_strip.begin && mark.at < m_strip.end &&
                    mark.kind != MarkKind::kRetry;
           });
  }

  const TimelineModel& m_model;
  Strip m_strip;
  std::vector<Strip> m_strips;
};

}  // namespace

std::vector<Strip> LayOut(const TimelineModel& model) {
  StripMaker maker(model);
  for (size_t process = 0; process < model.processes.size(); ++process) maker.Take(process);
  return maker.Strips();
}

}  // namespace nuvelta::support
