#include <chrono>
#include <cstdio>
#include <optional>

#include "notebook/program/commands.h"
#include "notebook/story/interruption.h"
#include "notebook/story/standard_output.h"
#include "notebook/story/story.h"
#include "notebook/story/temporary_folder.h"
#include "support/doctor.h"
#include "support/explain.h"

namespace nuvelta::story {

using virtual_notebook::Nanoseconds;

int Doctor(const DoctorCommand& command) {
  const auto scenarios = ReadAll({command.file});
  if (!scenarios) return support::kBadInput;
  TakeInterruptions();
  const TemporaryFolder disk;
  std::optional<support::Diagnosis> diagnosis;
  Options options{
      .disk = disk.Path(),
      .go_on = [](Nanoseconds /*story_time*/) { return NotedInterruption() == 0; },
      .visit = {.body = [&] { diagnosis = support::Diagnose({.query = command.query}); }}};
  if (command.at) {
    options.visit.at =
        std::chrono::duration_cast<Nanoseconds>(std::chrono::duration<double>(*command.at));
  }
  const virtual_notebook::StoryReport report = Play(scenarios->front(), options);
  for (const std::string& note : report.notes) std::fprintf(stderr, "%s\n", note.c_str());
  if (const int signal = NotedInterruption(); signal != 0) {
    return EndInterrupted("virtual_notebook", signal);
  }
  if (!diagnosis) {
    std::fprintf(stderr, "%s: the story did not come to the doctor: %s\n", command.file.c_str(),
                 report.deadlock.c_str());
    return support::kBadInput;
  }
  StandardOutput().Print(command.json
                             ? support::DiagnosisJson(*diagnosis)
                             : support::DiagnosisText(*diagnosis, StandardOutput().IsTerminal()));
  return support::ExitCodeOf(support::InfoOf(diagnosis->run.cause).verdict);
}

}  // namespace nuvelta::story
