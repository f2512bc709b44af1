#include "support/timeline_model.h"

#include <algorithm>
#include <array>
#include <utility>

#include "support/printable.h"
#include "support/run_text.h"

namespace nuvelta::support {

namespace {

using enum LineKind;

constexpr size_t kMostNamedThreads = 1000;
constexpr size_t kMostProblems = 20;
constexpr size_t kTagLength = 6;  // "i :   "

// What a thread does, by the first of its lines that tells.
struct RoleText {
  std::string_view text;
  ThreadRole role;
};

constexpr std::array kRoleTexts{
    RoleText{"h : + ServiceMain", ThreadRole::kServiceMain},
    RoleText{"h : + CTaskManager::dealTaskThread", ThreadRole::kWorker},
    RoleText{"h : + CTaskAuthModule::doJob", ThreadRole::kWorker},
    RoleText{"h : + DeleteFileWhileExceedMaxSizeAndTime", ThreadRole::kRetention},
    RoleText{"h : + ServiceCtrlHandler", ThreadRole::kDispatcher},
    RoleText{"h : + CMbnWinRtHelper::Account*", ThreadRole::kPlatform},
    RoleText{"i :   N auth *", ThreadRole::kDispatcher},
    RoleText{"i :   PowerChanged: *", ThreadRole::kPower},
    RoleText{"i :   PBT_APM*", ThreadRole::kPower},
};

MarkKind MarkOf(NoteKind kind) {
  switch (kind) {
    case NoteKind::kSuspends:
    case NoteKind::kResumes:
    case NoteKind::kQuickBoot:
      return MarkKind::kPower;
    case NoteKind::kServiceRuns:
    case NoteKind::kStopAsked:
    case NoteKind::kServiceEnds:
      return MarkKind::kService;
    case NoteKind::kGiveUp:
    case NoteKind::kRestartAsked:
    case NoteKind::kRestartFailed:
    case NoteKind::kFailure:
      return MarkKind::kTrouble;
    case NoteKind::kRetry:
      return MarkKind::kRetry;
    default:
      return MarkKind::kOther;
  }
}

// What a line says a command came to; empty when it tells nothing of it.
std::string AnswerText(LineMeaning meaning) {
  const std::string rest = Printable(meaning.rest.substr(0, kLongestText));
  switch (meaning.kind) {
    case kAnswer:
      return "level " + rest.substr(0, rest.find('.'));
    case kSetAnswered:
      return "obeyed";
    case kAsyncState:
      return rest == "Started" ? "no answer in time" : "ended as " + rest;
    case kStatusCode:
      return "refused, status code " + rest;
    case kException:
      return "exception: " + rest;
    case kOtherException:
      return "exception";
    case kQueryFailed:
      return "no usable answer";
    default:
      return {};
  }
}

std::string WayOf(const Run& run) {
  std::string way = InfoOf(run.cause).id;
  for (const ChainLink& link : DecisionChain(run)) way += '\n' + link.label + ' ' + link.text;
  return way;
}

}  // namespace

std::string MessageInOneLine(std::string_view text) {
  constexpr std::string_view kEnds = "\r\n";
  text.remove_prefix(std::min(kTagLength, text.size()));
  const bool is_long = text.size() > kLongestText;
  text = text.substr(0, kLongestText);
  std::string line;
  while (!text.empty()) {
    const std::string_view part = text.substr(0, text.find_first_of(kEnds));
    if (!part.empty()) line += (line.empty() ? "" : " \u21B5 ") + Printable(part);
    text.remove_prefix(part.size());
    text.remove_prefix(std::min(text.find_first_not_of(kEnds), text.size()));
  }
  return is_long ? line + " [...]" : line;
}

const char* NameOf(ThreadRole role) {
  switch (role) {
    case ThreadRole::kDispatcher:
      return "dispatcher";
    case ThreadRole::kServiceMain:
      return "service main";
    case ThreadRole::kWorker:
      return "worker";
    case ThreadRole::kPower:
      return "power callback";
    case ThreadRole::kPlatform:
      return "platform event";
    case ThreadRole::kRetention:
      return "log retention";
    case ThreadRole::kUnknown:
      break;
  }
  return "thread";
}

std::optional<uint64_t> TimelineModel::IndexOf(const Place& place) const {
  for (uint64_t index = End(); index-- > first;) {
    const TimelineLine& line = LineAt(index);
    if (line.number == place.line && *line.file == place.file) return index;
  }
  return std::nullopt;
}

std::optional<int32_t> TimelineModel::RadioAt(uint64_t index) const {
  const auto later = std::ranges::upper_bound(radio, index, {}, &RadioWord::at);
  return later == radio.begin() ? std::nullopt : std::prev(later)->level;
}

void TimelineReader::OnNotebook(const NotebookLogs& logs) {
  ++m_notebooks;
  m_model.verdict.name = logs.name;
}

void TimelineReader::OnVerdict(const NotebookVerdict& verdict) {
  m_has_verdict = true;
  m_model.verdict = verdict;
}

void TimelineReader::OnProblem(const std::string& what) {
  if (m_model.problems.size() < kMostProblems) m_model.problems.push_back(Printable(what));
}

void TimelineReader::OnPart(const std::string& file) {
  m_file = std::make_shared<const std::string>(file);
}

void TimelineReader::OnLine(const LogLine& line, LineMeaning meaning) {
  KeepLine(line, meaning);
  NameThread(line);
  m_scopes.Take(line.thread, line.text, m_here, m_model.scopes);
  FollowCommand(meaning);
  if (meaning.kind == kRunBegins) m_run_begin = m_here;
  DropOld();
}

void TimelineReader::KeepLine(const LogLine& line, LineMeaning meaning) {
  m_here = m_model.End();
  TimelineLine kept{
      .file = m_file,
      .number = line.number,
      .time = std::string(line.time),
      .thread = std::string(line.thread),
      .text = Printable(line.text.substr(0, kTagLength)) + MessageInOneLine(line.text),
      .known = meaning.kind != kUnknown};
  if (m_here > m_begin) kept.gap = MillisecondsBetween(m_model.lines.back().time, line.time);
  m_model.lines.push_back(std::move(kept));
}

void TimelineReader::NameThread(const LogLine& line) {
  for (const RoleText& known : kRoleTexts) {
    if (!Fits(line.text, known.text)) continue;
    if (m_roles.size() < kMostNamedThreads) m_roles.emplace(line.thread, known.role);
    return;
  }
}

void TimelineReader::FollowCommand(LineMeaning meaning) {
  switch (meaning.kind) {
    case kQueryBegins:
    case kSetBegins:
      m_command_begin = m_here;
      m_command_is_set = meaning.kind == kSetBegins;
      return;
    case kSetSent:
      // Until it is answered it may have been obeyed.
      m_level_before = m_level;
      return SayRadio(m_here, std::nullopt);
    case kRunEnds:
      m_command_begin.reset();
      return;
    default:
      break;
  }
  const std::string answer = AnswerText(meaning);
  if (!m_command_begin || answer.empty()) return;
  if (meaning.kind == kAnswer) {
    const auto level = NumberBehind(meaning.rest, "");
    SayRadio(m_here, level ? std::optional(static_cast<int32_t>(*level)) : std::nullopt);
  }
  if (meaning.kind == kSetAnswered) SayRadio(m_here, 1);
  if (meaning.kind == kStatusCode && m_command_is_set) SayRadio(m_here, m_level_before);
  m_model.commands.push_back({.begin = *m_command_begin,
                              .end = m_here,
                              .set = m_command_is_set,
                              .answered = meaning.kind == kAnswer || meaning.kind == kSetAnswered,
                              .text = answer});
  m_command_begin.reset();
}

void TimelineReader::SayRadio(uint64_t at, std::optional<int32_t> level) {
  if (!m_model.radio.empty() && m_model.radio.back().at == at) m_model.radio.pop_back();
  m_level = level;
  m_model.radio.push_back({.at = at, .level = level});
}

void TimelineReader::OnTrigger(const Trigger& trigger) {
  m_model.marks.push_back({m_here, MarkKind::kTrigger, NameOf(trigger.kind)});
}

void TimelineReader::OnNote(const Note& note) {
  // Nobody has asked the modem since.
  if (note.kind == NoteKind::kSuspends) SayRadio(m_here, std::nullopt);
  m_model.marks.push_back({m_here, MarkOf(note.kind), TextOf(note)});
}

void TimelineReader::OnRun(const Run& run) {
  std::string way = WayOf(run);
  m_model.runs.push_back({.begin = m_run_begin.value_or(m_here),
                          .end = m_here,
                          .run = run,
                          .repeats = way == m_run_way});
  m_run_way = std::move(way);
  m_run_begin.reset();
}

void TimelineReader::OnProcessEnds(const Process& process) {
  // The line at hand can be the first of the next process.
  const uint64_t end = m_begin + process.lines;
  if (process.lines > 0) {
    m_scopes.Finish(end - 1, m_model.scopes);
    if (m_run_begin) m_model.runs.push_back({.begin = *m_run_begin, .end = end - 1});
  }
  m_model.processes.push_back(
      {.process = process, .begin = m_begin, .end = end, .roles = std::move(m_roles)});
  m_roles.clear();
  m_run_begin.reset();
  m_run_way.clear();
  m_command_begin.reset();
  m_begin = end;
  if (m_model.Holds(end)) m_model.lines.back().gap = 0;
  SayRadio(end, std::nullopt);
  DropOld();
}

void TimelineReader::DropOld() {
  uint64_t first = std::max(m_model.End(), kMostTimelineLines) - kMostTimelineLines;
  while (m_model.processes.size() > kMostTimelineProcesses) {
    first = std::max(first, m_model.processes.front().end);
    m_model.processes.pop_front();
    ++m_model.processes_left_out;
  }
  for (; m_model.first < first; ++m_model.first) m_model.lines.pop_front();
  const auto drop = [&](auto& all, auto last_line) {
    while (!all.empty() && all.front().*last_line < m_model.first) all.pop_front();
  };
  drop(m_model.scopes, &Scope::end);
  drop(m_model.marks, &TimelineMark::at);
  drop(m_model.runs, &TimelineRun::end);
  drop(m_model.commands, &TimelineCommand::end);
  std::deque<RadioWord>& radio = m_model.radio;
  while (radio.size() > 1 && radio[1].at <= m_model.first) radio.pop_front();
}

}  // namespace nuvelta::support
