#include "notebook/program/why.h"

#include "support/log_files.h"
#include "support/log_story.h"

namespace nuvelta::story {

namespace {

class LastProcess final : public support::LogListener {
 public:
  void OnProcessEnds(const support::Process& process) override {
    why = {.cause = process.cause, .decided = process.decided};
  }
  Why why;
};

}  // namespace

Why WhyOf(const std::vector<std::filesystem::path>& log_files) {
  LastProcess last;
  support::ReadLogFiles(log_files, last);
  return last.why;
}

std::string TextOf(const Why& why) {
  const support::CauseInfo& info = support::InfoOf(why.cause);
  std::string text = std::string(support::NameOf(info.verdict)) + " (" + info.id + "): ";
  text += info.reason;
  if (why.decided.line == 0) return text;
  return text + "; line " + std::to_string(why.decided.line) + " of " + why.decided.file;
}

}  // namespace nuvelta::story
