// The reader of logs: cut in pieces it reads the same records as whole, and whatever it is
// fed, what it tells adds up and can be printed.
#include <string>
#include <vector>

#include "support/log_lines.h"
#include "support/log_story.h"
#include "support/printable.h"
#include "support/run_text.h"
#include "target.h"

namespace nuvelta::fuzz {
namespace {

using support::LogLine;

bool IsPrintable(const std::string& text) {
  return std::ranges::all_of(text,
                             [](char letter) {
                               const auto byte = static_cast<uint8_t>(letter);
                               return byte >= 0x20 && byte != 0x7F;
                             }) &&
         support::Printable(text) == text;
}

class Checker final : public support::LogListener {
 public:
  void OnTrigger(const support::Trigger& /*trigger*/) override { ++m_triggers; }
  void OnNote(const support::Note& note) override {
    Require(IsPrintable(support::TextOf(note)), "a note can be printed");
    m_retries += note.kind == support::NoteKind::kRetry ? 1 : 0;
  }
  void OnRun(const support::Run& run) override {
    Require(run.number == ++m_runs, "runs are counted");
    Require(run.decided.line >= run.begin.line && run.decided.line <= run.end.line,
            "a line of the run decides");
    const bool knows = run.cause != support::Cause::kUnexplained;
    Require(knows == !run.deciding.empty(), "what is decided has a line");
    for (const support::ChainLink& link : support::DecisionChain(run)) {
      Require(IsPrintable(link.text), "the chain can be printed");
    }
  }
  void OnProcessEnds(const support::Process& process) override {
    Require(
        process.runs == m_runs && process.triggers == m_triggers && process.retries == m_retries,
        "the counts are those of what was told");
    Require(process.unknown_lines <= process.lines, "no more lines are unknown than there are");
    m_lines += process.lines;
    m_runs = m_triggers = m_retries = 0;
  }

  uint64_t Lines() const { return m_lines; }

 private:
  uint64_t m_runs = 0;
  uint64_t m_triggers = 0;
  uint64_t m_retries = 0;
  uint64_t m_lines = 0;
};

void Run(Bytes bytes) {
  Input input(bytes);
  const size_t piece = 1 + size_t{input.Byte()} * 31;
  const std::string log = Input::TextOf(input.Rest());
  const std::vector<LogLine> whole = support::ParseLog(log);
  Checker checker;
  support::LogStory story(checker);
  story.BeginFile("log", true);
  support::LogSplitter splitter;
  size_t count = 0;
  const auto take = [&] {
    for (LogLine line; splitter.Next(line); ++count) {
      Require(count < whole.size() && line.text == whole[count].text &&
                  line.time == whole[count].time && line.thread == whole[count].thread &&
                  line.number == whole[count].number,
              "pieces read as the whole");
      story.Take(line);
    }
  };
  for (size_t at = 0; at < log.size(); at += piece) {
    const std::string_view part = std::string_view(log).substr(at, piece);
    std::ranges::copy(part, splitter.Room().begin());
    splitter.Filled(part.size());
    take();
  }
  splitter.Finish();
  take();
  Require(count == whole.size(), "no record is lost at the end");
  story.EndFile(splitter.Strays(), splitter.EndsInMidLine());
  story.Finish();
  Require(checker.Lines() == count, "each record is some process's");
}

const Registration g_registration("log", Run);

}  // namespace
}  // namespace nuvelta::fuzz
