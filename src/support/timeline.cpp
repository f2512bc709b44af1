#include "support/timeline.h"

#include "support/html_text.h"
#include "support/own_file.h"
#include "support/path_text.h"
#include "support/printable.h"
#include "support/timeline_model.h"
#include "support/timeline_page.h"
#include "support/trace_json.h"

namespace nuvelta::support {

namespace {

std::string Said(const TimelineModel& model, const std::string& file) {
  const CauseInfo& info = InfoOf(model.verdict.last.cause);
  std::string text = Printable(file);
  Put(text, ": ", NameOf(info.verdict), " (", info.id, "), ");
  if (model.first > 0) Put(text, "the last ");
  Put(text, model.lines.size(), " lines, ", model.runs.size(),
      model.runs.size() == 1 ? " run\n" : " runs\n");
  return text;
}

}  // namespace

int WriteTimeline(const TimelineRequest& request, const Print& print, const Print& complain) {
  std::string problem = WhyNotOurs(PathOf(request.page), kPageMark);
  if (problem.empty() && !request.trace.empty())
    problem = WhyNotOurs(PathOf(request.trace), kTraceMark);
  if (!problem.empty()) {
    complain(Printable(problem) + "\n");
    return kBadInput;
  }
  TimelineModel model;
  TimelineReader reader(model);
  const int verdict = Explain({request.path}, reader);
  for (const std::string& what : model.problems) complain(what + "\n");
  if (reader.Notebooks() > 1) {
    complain(Printable(request.path) + ": there are the logs of " +
             std::to_string(reader.Notebooks()) + " notebooks below it; name one of them\n");
    return kBadInput;
  }
  if (!reader.HasVerdict()) return kBadInput;
  problem = WriteOwnFile(PathOf(request.page), TimelinePage(model));
  if (problem.empty() && !request.trace.empty()) {
    problem = WriteOwnFile(PathOf(request.trace), TimelineTrace(model));
  }
  if (!problem.empty()) {
    complain(Printable(problem) + "\n");
    return kNotWritten;
  }
  print(Said(model, request.page));
  return verdict == kBadInput ? kBadInput : 0;
}

}  // namespace nuvelta::support
