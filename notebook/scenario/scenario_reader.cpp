#include "notebook/scenario/scenario_reader.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <limits>
#include <system_error>

#include "notebook/scenario/json_document.h"
#include "notebook/scenario/scenario_parts.h"
#include "notebook/scenario/scenario_text.h"
#include "notebook/scenario/time_zone_text.h"

namespace nuvelta::virtual_notebook {

namespace {

constexpr int64_t kLongestRest = 86400;  // seconds

std::string ReadTitle(const JsonCursor& at) {
  std::string title = at.NonEmptyText();
  const auto is_control = [](char c) { return static_cast<unsigned char>(c) < 0x20; };
  if (std::ranges::any_of(title, is_control)) at.RefuseValue("a title of one line");
  return title;
}

Scenario ReadRoot(const JsonCursor& root, const std::string& folder) {
  const JsonObject object(root, {"title", "story", "start_time", "time_zone", "seed", "notebook",
                                 "events", "faults", "delays", "rest_within_s", "stop_at_end"});
  Scenario scenario;
  scenario.title = ReadTitle(object.Need("title"));
  object.Read("story", scenario.story);
  if (const auto time = object.Find("start_time")) {
    scenario.start_time = time->Text();
    if (!IsDateTime(scenario.start_time)) {
      time->RefuseValue("a moment from 1990 to 2099 such as \"2026-11-16 00:58:46\"");
    }
  }
  if (const auto zone = object.Find("time_zone")) {
    scenario.time_zone = zone->Text();
    if (!IsTimeZone(scenario.time_zone)) {
      zone->RefuseValue("a POSIX time zone such as \"UTC\" or \"CET-1CEST,M3.5.0,M10.5.0/3\"");
    }
  }
  object.ReadWhole("seed", scenario.seed, 0, std::numeric_limits<int64_t>::max());
  scenario.notebook = DefaultNotebook();
  if (const auto notebook = object.Find("notebook")) {
    scenario.notebook = ReadNotebook(*notebook, folder);
  }
  scenario.events = ReadEvents(object.Find("events"));
  if (const auto faults = object.Find("faults")) scenario.faults = ReadFaults(*faults);
  if (const auto delays = object.Find("delays")) scenario.delays = ReadDelays(*delays);
  if (const auto rest = object.Find("rest_within_s")) {
    scenario.rest_within = rest->Seconds(0, kLongestRest);
  }
  object.Read("stop_at_end", scenario.stop_at_end);
  return scenario;
}

}  // namespace

std::optional<std::string> ReadWholeFile(const std::string& path, size_t most, std::string& why) {
  std::error_code error;
  const auto status = std::filesystem::status(path, error);
  if (error || std::filesystem::is_directory(status)) {
    why = error ? error.message() : "a folder";
    return {};
  }
  // Only a regular file has an end that can be relied on.
  if (!std::filesystem::is_regular_file(status)) {
    why = "neither a file nor a folder";
    return {};
  }
  errno = 0;
  std::ifstream file(path, std::ios::binary);
  std::string bytes(most + 1, '\0');
  file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  if (file.bad() || (file.fail() && !file.eof())) {
    why = errno == 0 ? "cannot be read" : std::generic_category().message(errno);
    return {};
  }
  if (file.gcount() > static_cast<std::streamsize>(most)) {
    why = "too large";
    return {};
  }
  bytes.resize(static_cast<size_t>(file.gcount()));
  return bytes;
}

Scenario ReadScenarioText(std::string_view text, const std::string& name_for_errors,
                          const std::string& folder_for_raw_files) {
  const nlohmann::json document = ParseDocument(text, name_for_errors);
  return ReadRoot(JsonCursor(document, name_for_errors), folder_for_raw_files);
}

Scenario ReadScenarioFile(const std::string& path) {
  std::string why;
  const auto text = ReadWholeFile(path, kLargestScenario, why);
  if (!text) throw ScenarioError(path + ": " + why + "; expected a scenario file of at most 4 MiB");
  return ReadScenarioText(*text, path, std::filesystem::path(path).parent_path().string());
}

}  // namespace nuvelta::virtual_notebook
