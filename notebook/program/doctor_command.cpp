#include <chrono>
#include <cstdio>
#include <functional>
#include <optional>

#include "notebook/program/commands.h"
#include "notebook/story/interruption.h"
#include "notebook/story/standard_output.h"
#include "notebook/story/story.h"
#include "notebook/story/temporary_folder.h"
#include "support/capture/capture.h"
#include "support/doctor.h"
#include "support/explain.h"

namespace nuvelta::story {

using virtual_notebook::Nanoseconds;

namespace {

// Has `body` look at the notebook at that moment of its story. Answers an exit code when it
// did not come to that.
std::optional<int> Visit(const char* who, const std::string& file, std::optional<double> at,
                         const std::function<void()>& body) {
  const auto scenarios = ReadAll({file});
  if (!scenarios) return support::kBadInput;
  TakeInterruptions();
  const TemporaryFolder disk;
  bool came = false;
  Options options{.disk = disk.Path(),
                  .go_on = [](Nanoseconds /*story_time*/) { return NotedInterruption() == 0; },
                  .visit = {.body = [&] {
                    came = true;
                    body();
                  }}};
  if (at) {
    options.visit.at = std::chrono::duration_cast<Nanoseconds>(std::chrono::duration<double>(*at));
  }
  const virtual_notebook::StoryReport report = Play(scenarios->front(), options);
  for (const std::string& note : report.notes) std::fprintf(stderr, "%s\n", note.c_str());
  if (const int signal = NotedInterruption(); signal != 0) {
    return EndInterrupted("virtual_notebook", signal);
  }
  if (came) return std::nullopt;
  std::fprintf(stderr, "%s: the story did not come to the %s: %s\n", file.c_str(), who,
               report.deadlock.c_str());
  return support::kBadInput;
}

}  // namespace

int Doctor(const DoctorCommand& command) {
  std::optional<support::Diagnosis> diagnosis;
  const auto failed = Visit("doctor", command.file, command.at,
                            [&] { diagnosis = support::Diagnose({.query = command.query}); });
  if (failed) return *failed;
  StandardOutput().Print(command.json
                             ? support::DiagnosisJson(*diagnosis)
                             : support::DiagnosisText(*diagnosis, StandardOutput().IsTerminal()));
  return support::ExitCodeOf(support::InfoOf(diagnosis->run.cause).verdict);
}

int Capture(const CaptureCommand& command) {
  std::string said;
  std::string complaint;
  int result = support::kNotWritten;
  const auto failed = Visit("capture", command.file, command.at, [&] {
    result = support::Capture(
        command.request, [&](std::string_view text) { said += text; },
        [&](std::string_view text) { complaint += text; });
  });
  if (failed) return *failed;
  std::fprintf(stderr, "%s", complaint.c_str());
  StandardOutput().Print(said);
  return result;
}

}  // namespace nuvelta::story
