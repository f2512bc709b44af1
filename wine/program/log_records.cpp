#include "wine/program/log_records.h"

#include <map>
#include <regex>

#include "support/line_kinds.h"
#include "support/log_lines.h"

namespace nuvelta::wine_notebook {

namespace {

// The first record of the thread that deletes old log files.
constexpr std::string_view kRetentionBegins = "+ DeleteFileWhileExceedMaxSizeAndTime";

struct Replacement {
  std::regex what;
  const char* by;
};

// What differs between two machines or two moments although the service does the
// same. Anything else that differs is a difference.
const std::vector<Replacement>& Replacements() {
  static const std::vector<Replacement> kReplacements = [] {
    std::vector<Replacement> replacements;
    const auto add = [&](const char* what, const char* by) {
      replacements.push_back({std::regex(what, std::regex::optimize), by});
    };
    add(R"(build at .*)", "build at <time>");
    add(R"(boot time \(ms\) == [0-9A-F]+)", "boot time (ms) == <time>");
    add(R"(Date: \d\d-\d\d-\d{4}\nTime: \d\d:\d\d:\d\d)", "Date: <time>");
    add(R"(verion: [0-9.]+)", "verion: <version>");
    // The variable "programdata", and log files' names.
    add(R"([A-Z]:\\[^:]*\\Nuvelta Wireless Inc\\MAService)", "<programdata>");
    add(R"(_\d{4}-\d\d-\d\d_\d\d\.\d\d\.\d\d)", "_<time>");
    // Moments, as text and in seconds since 1970.
    add(R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d)", "<time>");
    add(R"(\b\d{10}\b)", "<seconds>");
    // Sizes and ages of files: the current file grows while the folder is searched.
    add(R"(diff\[-?[0-9.]+ s\])", "diff[<age>]");
    add(R"((\d+\.\d)\d* (MB|day))", "$1 $2");
    add(R"(Cast Time [0-9.]+s)", "Cast Time <duration>");
    add(R"(device_service_session:0x[0-9a-f]+)", "device_service_session:<handle>");
    add(R"(/pid -?\d+)", "/pid <process>");
    // The thread's last error, which these two calls do not set: it is whatever some
    // system library has left there.
    add(R"((Reg(OpenKey|QueryValue)Ex [^\n]*,ERROR code =) \d+)", "$1 <left over>");
    return replacements;
  }();
  return kReplacements;
}

std::string Comparable(std::string text) {
  std::erase(text, '\r');
  for (const auto& [what, by] : Replacements()) text = std::regex_replace(text, what, by);
  return text;
}

struct RawRecord {
  std::string thread;
  std::string text;
  bool begins_process = false;
};

std::vector<RawRecord> Split(std::string_view log) {
  const std::vector<support::LogLine> lines = support::ParseLog(log);
  std::vector<RawRecord> records;
  // What no record owns, and a last line without an end, are differences too.
  const auto owned =
      lines.empty() ? log.size() : static_cast<size_t>(lines.front().time.data() - log.data());
  if (owned > 0)
    records.push_back({.thread = "", .text = Comparable(std::string(log.substr(0, owned)))});
  for (const support::LogLine& line : lines) {
    const bool ends = &line != &lines.back() || log.ends_with('\n');
    records.push_back({.thread = std::string(line.thread),
                       .text = Comparable(std::string(line.text) + (ends ? "\n" : "")),
                       .begins_process = support::MeaningOf(line.text).kind ==
                                         support::LineKind::kProcessBegins});
  }
  return records;
}

// Where the process begins whose main thread's first record is at `first`: the
// thread that looks after old log files may have written before it.
size_t BeginOfProcess(const std::vector<RawRecord>& records, size_t first) {
  for (size_t i = first; i > 0; --i) {
    if (records[i - 1].thread != records[first - 1].thread) break;
    if (support::Contains(records[i - 1].text, kRetentionBegins)) return i - 1;
  }
  return first;
}

// Where each process's records begin.
std::vector<size_t> Begins(const std::vector<RawRecord>& records) {
  std::vector<size_t> begins;
  for (size_t i = 0; i < records.size(); ++i) {
    if (records[i].begins_process) begins.push_back(BeginOfProcess(records, i));
  }
  // Nothing is left out, whatever there is.
  if (!records.empty() && begins.empty()) begins.push_back(0);
  if (!begins.empty()) begins.front() = 0;
  begins.push_back(records.size());
  return begins;
}

}  // namespace

std::vector<ProcessLog> ComparableLog(std::string_view log) {
  const std::vector<RawRecord> records = Split(log);
  const std::vector<size_t> begins = Begins(records);
  std::vector<ProcessLog> processes;
  for (size_t i = 0; i + 1 < begins.size(); ++i) {
    std::map<std::string, int> roles;
    ProcessLog& process = processes.emplace_back();
    for (size_t j = begins[i]; j < begins[i + 1]; ++j) {
      const int next = static_cast<int>(roles.size()) + 1;
      const int role = roles.try_emplace(records[j].thread, next).first->second;
      process.push_back({role, records[j].text});
    }
  }
  return processes;
}

}  // namespace nuvelta::wine_notebook
