#include "story_support.h"

#include <algorithm>
#include <map>
#include <stdexcept>

#include "notebook/scenario/scenario_reader.h"
#include "notebook/scenario/scenario_text.h"
#include "replay.h"
#include "source_folder.h"
#include "support/log_lines.h"

namespace nuvelta::test {

namespace fs = std::filesystem;
using support::Contains;

namespace {

const fs::path kScenarios = SourceFolder() / "scenarios";

void AddLine(std::string& lines, std::string_view line) { lines.append(line).append("\n"); }

[[maybe_unused]] const bool g_folders_in_memory = (story::PreferFoldersInMemory(), true);

// The files of scenarios, and the texts of inline ones, by their titles.
std::map<std::string, std::function<std::string()>> g_files;

void NoteStory(const Scenario& scenario, std::optional<uint64_t> seed, const char* options) {
  const auto file = g_files.find(scenario.title);
  if (file == g_files.end()) return NoteReplay(nullptr);
  NoteReplay([file = file->second, seed = seed.value_or(scenario.seed), options] {
    return ReplayCommand(file(), seed) + options;
  });
}

std::vector<std::string_view> SplitLines(std::string_view text) {
  std::vector<std::string_view> lines;
  while (!text.empty()) {
    const size_t end = std::min(text.find('\n'), text.size() - 1) + 1;
    lines.push_back(text.substr(0, end));
    text.remove_prefix(end);
  }
  return lines;
}

// Some of the lines, each with its number; printable and without its line end.
std::string Numbered(const std::vector<std::string_view>& lines, size_t from, size_t to) {
  std::string text;
  for (size_t i = from; i < std::min(to, lines.size()); ++i) {
    const std::string_view line = lines[i].substr(0, lines[i].find_last_not_of("\r\n") + 1);
    text += (i < 9    ? "     "
             : i < 99 ? "    "
                      : "   ") +
            std::to_string(i + 1) + "  " + virtual_notebook::Shown(line, 400) + "\n";
  }
  return to > lines.size() ? text + "        (its end)\n" : text;
}

}  // namespace

std::vector<Record> Told::Records() const {
  const std::vector<support::LogLine> lines = support::ParseLog(log);
  if (!log.empty() && !log.ends_with("\r\n")) {
    throw std::runtime_error("the log's last line has no end");
  }
  if (!log.empty() && (lines.empty() || lines.front().time.data() != log.data())) {
    throw std::runtime_error("no log line: " + log.substr(0, log.find('\n')));
  }
  std::vector<Record> records;
  for (const support::LogLine& line : lines) {
    records.push_back({std::string(line.time), std::string(line.thread), std::string(line.text)});
  }
  return records;
}

std::string Told::Between(std::string_view from, std::string_view to, int skip) const {
  std::string lines;
  std::string thread;
  for (const Record& record : Records()) {
    if (thread.empty() && Contains(record.text, from) && skip-- == 0) {
      thread = record.thread;
      AddLine(lines, record.text);
    } else if (record.thread == thread) {
      AddLine(lines, record.text);
      if (Contains(record.text, to)) return lines;
    }
  }
  return {};
}

size_t Told::Count(std::string_view text) const {
  size_t count = 0;
  for (size_t at = log.find(text); at != std::string::npos; at = log.find(text, at + 1)) ++count;
  return count;
}

std::string Told::Matching(std::string_view part) const {
  std::string lines;
  for (const Record& record : Records()) {
    if (Contains(record.text, part)) AddLine(lines, record.text);
  }
  return lines;
}

std::vector<std::string> ShippedScenarios() {
  std::vector<std::string> names;
  for (const auto& file : fs::directory_iterator(kScenarios)) {
    if (file.path().extension() == ".json") names.push_back(file.path().stem().string());
  }
  std::ranges::sort(names);
  return names;
}

Scenario Shipped(const std::string& name) {
  Scenario scenario = virtual_notebook::ReadScenarioFile((kScenarios / (name + ".json")).string());
  g_files[scenario.title] = [file = "scenarios/" + name + ".json"] { return file; };
  return scenario;
}

Scenario Inline(std::string json) {
  std::ranges::replace(json, '\'', '"');
  const bool empty = json.find(':') == std::string::npos;
  const std::string title = "inline " + std::to_string(g_files.size());
  json.insert(json.find('{') + 1, "\"title\": \"" + title + (empty ? "\"" : "\","));
  g_files[title] = [json] {
    const auto* const test = testing::UnitTest::GetInstance()->current_test_info();
    return KeepFinding(std::string(test->test_suite_name()) + "." + test->name(), json);
  };
  return virtual_notebook::ReadScenarioText(json, title, kScenarios.string());
}

Told Tell(const Scenario& scenario, std::optional<uint64_t> seed) {
  NoteStory(scenario, seed, "");
  const TemporaryFolder disk;
  Told told{.report = story::Play(scenario, {.disk = disk.Path(), .seed = seed}), .log = {}};
  told.log = story::ReadLog(scenario, disk.Path());
  return told;
}

StoryReport TellFreely(const Scenario& scenario) {
  NoteStory(scenario, {}, " --free");
  const TemporaryFolder disk;
  return story::Play(scenario, {.disk = disk.Path(), .seed = {}, .free_running = true});
}

std::string Commands(const StoryReport& report) {
  std::string text;
  std::string last;
  size_t times = 0;
  const auto finish = [&] {
    if (times == 0) return;
    if (!text.empty()) text += ' ';
    text += last + (times > 1 ? "*" + std::to_string(times) : "");
  };
  for (const auto& command : report.commands) {
    std::string bytes;
    for (const uint8_t byte : command.payload) {
      constexpr std::string_view kDigits = "0123456789ABCDEF";
      bytes += {kDigits[byte >> 4U], kDigits[byte & 15U]};
    }
    if (command.command_id != 1) bytes += "#" + std::to_string(command.command_id);
    if (times > 0 && bytes != last) {
      finish();
      times = 0;
    }
    last = bytes;
    ++times;
  }
  finish();
  return text;
}

std::string States(const StoryReport& report) {
  std::string text;
  uint32_t process = 0;
  for (const auto& status : report.status_reports) {
    if (!text.empty()) text += status.process == process ? " " : " | ";
    text += std::to_string(status.status.dwCurrentState);
    process = status.process;
  }
  return text;
}

std::string Lines(std::initializer_list<std::string_view> lines) {
  std::string text;
  for (const std::string_view line : lines) AddLine(text, line);
  return text;
}

testing::AssertionResult SameLines(const char* written_expression,
                                   const char* /*expected_expression*/, const std::string& written,
                                   const std::string& expected) {
  if (written == expected) return testing::AssertionSuccess();
  constexpr size_t kAround = 5;
  const auto now = SplitLines(written);
  const auto due = SplitLines(expected);
  size_t at = 0;
  while (at < now.size() && at < due.size() && now[at] == due[at]) ++at;
  return testing::AssertionFailure()
         << "the first difference is in line " << at + 1 << "\n"
         << Numbered(due, at - std::min(at, kAround), at) << "  expected\n"
         << Numbered(due, at, at + kAround + 1) << "  written\n"
         << Numbered(now, at, at + kAround + 1) << "of " << written_expression;
}

}  // namespace nuvelta::test
