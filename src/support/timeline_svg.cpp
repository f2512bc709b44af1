#include "support/timeline_svg.h"

#include <cmath>

#include "support/html_text.h"

namespace nuvelta::support {

const char* ClassOf(Verdict verdict) {
  switch (verdict) {
    case Verdict::kOn:
      return "on";
    case Verdict::kOffByRule:
      return "rule";
    case Verdict::kOffByFailure:
      return "failure";
    case Verdict::kUnknown:
      break;
  }
  return "unknown";
}

const char* ClassOf(MarkKind kind) {
  switch (kind) {
    case MarkKind::kTrigger:
      return "trigger";
    case MarkKind::kPower:
      return "power";
    case MarkKind::kService:
      return "service";
    case MarkKind::kTrouble:
      return "trouble";
    case MarkKind::kRetry:
    case MarkKind::kOther:
      break;
  }
  return "other";
}

Verdict VerdictOf(const TimelineRun& run) {
  return run.run ? InfoOf(run.run->cause).verdict : Verdict::kUnknown;
}

std::string RunTitle(const TimelineRun& run) {
  if (!run.run) return "a run that the log ends in";
  const CauseInfo& info = InfoOf(run.run->cause);
  std::string title;
  Put(title, "run ", run.run->number, ", ", DurationText(std::llround(run.run->seconds * 1000)),
      ": ", NameOf(info.verdict), " (", info.id, "), decided in line ", run.run->decided.line);
  return title;
}

std::string RadioText(std::optional<int32_t> level) {
  if (!level) return "not told";
  std::string text;
  Put(text, "level ", *level, *level == 1 ? ", on" : ", not on");
  return text;
}

std::string LineTitle(const TimelineModel& model, uint64_t index) {
  const TimelineLine& line = model.LineAt(index);
  std::string title;
  Put(title, "line ", line.number, ", ", ClockOf(line.time));
  return title;
}

std::string MarkShape(MarkKind kind, int x, int y) {
  std::string shape;
  switch (kind) {
    case MarkKind::kTrigger:
      Put(shape, "<path d=\"M", x - 5, " ", y - 5, "h10l-5 10z\"/>");
      break;
    case MarkKind::kPower:
      Put(shape, "<path d=\"M", x, " ", y - 6, "l5 6l-5 6l-5-6z\"/>");
      break;
    case MarkKind::kTrouble:
      Put(shape, "<path d=\"M", x, " ", y - 6, "l6 11h-12z\"/>");
      break;
    case MarkKind::kService:
      Put(shape, "<rect x=\"", x - 4, "\" y=\"", y - 4, "\" width=\"8\" height=\"8\"/>");
      break;
    case MarkKind::kRetry:
    case MarkKind::kOther:
      Put(shape, "<circle cx=\"", x, "\" cy=\"", y, "\" r=\"4\"/>");
      break;
  }
  return shape;
}

}  // namespace nuvelta::support
