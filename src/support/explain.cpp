#include "support/explain.h"

#include <algorithm>
#include <array>
#include <map>
#include <system_error>

#include "support/log_files.h"
#include "support/path_text.h"

namespace nuvelta::support {

namespace fs = std::filesystem;

namespace {

constexpr const char* kNameShape = "nuvelta_maservice_monitor_HX2208GW_*.log";

// Passes a notebook's story on and keeps what its verdict needs.
class VerdictKeeper final : public LogListener {
 public:
  VerdictKeeper(NotebookVerdict& verdict, LogListener& listener)
      : m_verdict(verdict), m_listener(listener) {}

  void OnPart(const std::string& file) override { m_listener.OnPart(file); }
  void OnLine(const LogLine& line, LineMeaning meaning) override {
    ++m_lines;
    if (m_verdict.first_seen.empty()) m_verdict.first_seen = line.time;
    if (meaning.kind == LineKind::kUnknown) ++m_unknown;
    m_listener.OnLine(line, meaning);
  }
  void OnProcess(const Process& begun) override { m_listener.OnProcess(begun); }
  void OnTrigger(const Trigger& trigger) override { m_listener.OnTrigger(trigger); }
  void OnNote(const Note& note) override { m_listener.OnNote(note); }
  void OnRun(const Run& run) override { m_listener.OnRun(run); }
  void OnProcessEnds(const Process& process) override {
    const bool same =
        m_verdict.processes > 0 && m_verdict.last.GetVerdict() == process.GetVerdict();
    if (!same) m_verdict.since = process.since.line == 0 ? process.decided : process.since;
    ++m_verdict.processes;
    m_verdict.last = process;
    m_listener.OnProcessEnds(process);
  }

  uint64_t Lines() const { return m_lines; }
  bool KnowsSomething() const { return m_unknown < m_lines; }

 private:
  NotebookVerdict& m_verdict;
  LogListener& m_listener;
  uint64_t m_lines = 0;
  uint64_t m_unknown = 0;
};

class Explainer {
 public:
  explicit Explainer(Explanation& explanation) : m_explanation(explanation) {}

  void Take(const std::vector<std::string>& paths) {
    for (const std::string& text : paths) {
      const fs::path path = PathOf(text);
      std::error_code error;
      const fs::file_status status = fs::status(path, error);
      if (fs::is_directory(status)) {
        TakeNamedFiles();
        TakeTree(path);
      } else if (fs::exists(status)) {
        TakeFile(path);
      } else {
        Complain(text + ": there is no such file or folder");
      }
    }
    TakeNamedFiles();
    m_explanation.OnEnd();
  }

  int ExitCode() const {
    if (m_bad) return kBadInput;
    for (const int code : {kRadioOffByFailure, kRadioUnknown, kRadioOffByRule}) {
      if (m_seen[static_cast<size_t>(code)]) return code;
    }
    return m_seen[kRadioOn] ? kRadioOn : kBadInput;
  }

 private:
  void Complain(const std::string& what) {
    m_bad = true;
    m_explanation.OnProblem(what);
  }

  // Files that are named one by one belong together when they lie together.
  void TakeFile(const fs::path& file) {
    if (!m_named.files.empty() && m_named.files.back().parent_path() != file.parent_path()) {
      TakeNamedFiles();
    }
    m_named.files.push_back(file);
    m_named.name = m_named.files.size() == 1 ? TextOf(file) : TextOf(file.parent_path());
  }

  void TakeNamedFiles() {
    if (!m_named.files.empty()) TakeNotebook(m_named);
    m_named = {};
  }

  // The folder and all below it; names in order.
  void TakeTree(const fs::path& folder) {
    if (!TakeFolder(folder)) {
      Complain(TextOf(folder) + ": there is no log of this service in it (" + kNameShape + ")");
    }
  }

  bool TakeFolder(const fs::path& folder) {
    std::error_code error;
    NotebookLogs logs{.name = TextOf(folder), .files = LogFilesIn(folder, error)};
    std::vector<fs::path> folders;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
      std::error_code unknown;
      if (entry->is_directory(unknown) && !entry->is_symlink(unknown)) {
        folders.push_back(entry->path());
      }
    }
    if (error) {
      Complain(TextOf(folder) + ": it cannot be read: " + error.message());
      return true;
    }
    bool found = !logs.files.empty();
    if (found) TakeNotebook(logs);
    std::ranges::sort(folders);
    for (const fs::path& below : folders) found = TakeFolder(below) || found;
    return found;
  }

  void TakeNotebook(const NotebookLogs& logs) {
    m_explanation.OnNotebook(logs);
    NotebookVerdict verdict{.name = logs.name};
    VerdictKeeper keeper(verdict, m_explanation);
    const std::vector<FileReading> readings = ReadLogFiles(logs.files, keeper);
    uint64_t bytes = 0;
    for (size_t i = 0; i < readings.size(); ++i) {
      bytes += readings[i].bytes;
      const std::string file = TextOf(logs.files[i]);
      if (!readings[i].problem.empty()) Complain(file + ": " + readings[i].problem);
      if (readings[i].grew) {
        m_explanation.OnProblem(file + ": it grew while it was read; what came late is left out");
      }
    }
    if (verdict.processes == 0) return;
    if (bytes > 0 && !keeper.KnowsSomething()) {
      Complain(logs.name + (keeper.Lines() == 0 ? ": this is no log" : ": another program's log") +
               "; expected lines such as \"2026-11-16 00:58:46.000 00000abc i :   text\" of this "
               "service");
      return;
    }
    verdict.last_seen = verdict.last.last_line.time;
    m_seen[static_cast<size_t>(ExitCodeOf(verdict.last.GetVerdict()))] = true;
    m_explanation.OnVerdict(verdict);
  }

  Explanation& m_explanation;
  NotebookLogs m_named;
  bool m_bad = false;
  std::array<bool, 4> m_seen{};  // by exit code
};

}  // namespace

int ExitCodeOf(Verdict verdict) { return static_cast<int>(verdict); }

int Explain(const std::vector<std::string>& paths, Explanation& explanation) {
  Explainer explainer(explanation);
  explainer.Take(paths);
  return explainer.ExitCode();
}

}  // namespace nuvelta::support
