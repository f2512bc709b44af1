#include "support/log_story.h"

#include <algorithm>

namespace nuvelta::support {

namespace {

using enum LineKind;

// More threads than these make no tasks at once.
constexpr size_t kMostThreads = 64;
constexpr int32_t kFullFunctionality = 1;

std::string_view UpTo(std::string_view text, char end) { return text.substr(0, text.find(end)); }

}  // namespace

void LogStory::BeginFile(const std::string& name, bool new_log) {
  if (new_log) {
    EndProcess();
    m_open = true;
    m_process.begin.file = name;
  }
  m_file = name;
  m_listener.OnPart(name);
}

void LogStory::EndFile(uint64_t strays, bool ends_in_mid_line) {
  m_process.stray_lines += strays;
  m_process.ends_in_mid_line = ends_in_mid_line;
}

void LogStory::Finish() { EndProcess(); }

Place LogStory::At(const LogLine& line) const {
  return {.file = m_file, .line = line.number, .time = std::string(line.time)};
}

void LogStory::Announce() {
  if (m_announced) return;
  m_announced = true;
  m_listener.OnProcess(m_process);
}

// Lines of the retention can stand before a process's first line.
void LogStory::BeginProcess(const LogLine& line) {
  if (m_announced || m_process.has_begin) {
    EndProcess();
    m_open = true;
  }
  m_process.has_begin = true;
  m_process.begin = At(line);
}

void LogStory::EndProcess() {
  if (!m_open) return;
  if (!m_worker.empty()) {
    m_process.unfinished = m_run.Get().begin;
    if (m_process.cause == Cause::kNoRun) {
      m_process.cause = Cause::kRunUnfinished;
      m_process.decided = m_process.unfinished;
    }
  }
  if (m_process.lines == 0 && m_process.stray_lines == 0) {
    m_process.cause = Cause::kLogSwitchedOff;
    m_process.decided = m_process.begin;
  }
  if (m_process.lines > 0) {
    m_process.last_line = {.file = m_file, .line = m_last_line, .time = m_last_time};
  }
  Announce();
  m_listener.OnProcessEnds(m_process);
  m_process = {};
  m_threads.clear();
  m_worker.clear();
  m_open = m_announced = false;
}

void LogStory::Take(const LogLine& line) {
  const LineMeaning meaning = MeaningOf(line.text);
  m_listener.OnLine(line, meaning);
  if (meaning.kind == kProcessBegins) BeginProcess(line);
  ++m_process.lines;
  m_last_time = line.time;
  m_last_line = line.number;
  if (m_process.begin.line == 0) m_process.begin = At(line);
  if (meaning.kind == kUnknown) ++m_process.unknown_lines;
  if (meaning.kind == kOther || meaning.kind == kUnknown) return;
  if (meaning.kind < kEnterArrival) TakeProcess(line, meaning);
  TakeSystem(line, meaning);
  TakeTrigger(line, meaning);
  TakeTask(line, meaning);
  TakeRestart(line, meaning);
  if (line.thread == m_worker) TakeRun(line, meaning);
}

void LogStory::TakeProcess(const LogLine& line, LineMeaning meaning) {
  switch (meaning.kind) {
    case kBuilt:
      m_process.built = meaning.rest.substr(0, kLongestText);
      return;
    case kVersion:
      m_process.version = meaning.rest.substr(0, kLongestText);
      return;
    case kRunLoopBegins:
      SetTrigger(line.thread, TriggerKind::kStart);
      return Tell(NoteKind::kServiceRuns, line);
    case kStopAsked:
      return Tell(NoteKind::kStopAsked, line);
    case kServiceEnds:
      m_process.ended = true;
      return Tell(NoteKind::kServiceEnds, line);
    case kDispatcherRefused:
    case kHandlerRefused:
    case kNoStopEvent:
      return Fail(Cause::kServiceNotStarted, line);
    case kNoWorker:
      return Fail(Cause::kNoWorker, line);
    case kArrivalsNotHeard:
    case kResumesNotHeard:
      return Tell(NoteKind::kFailure, line, MessageOf(line.text));
    default:
      return;
  }
}

void LogStory::TakeSystem(const LogLine& line, LineMeaning meaning) {
  switch (meaning.kind) {
    case kDeviceArrives:
      return Tell(NoteKind::kDeviceArrives, line, UpTo(meaning.rest, ')'));
    case kDeviceLeaves:
      return Tell(NoteKind::kDeviceLeaves, line, UpTo(meaning.rest, ')'));
    case kSuspends:
      return Tell(NoteKind::kSuspends, line);
    case kSleepResume:
      SetTrigger(line.thread, TriggerKind::kResume);
      return Tell(NoteKind::kResumes, line);
    case kQuickBoot:
      SetTrigger(line.thread, TriggerKind::kQuickBoot);
      return Tell(NoteKind::kQuickBoot, line);
    case kLogon:
      return Tell(NoteKind::kLogon, line);
    case kEventLogNotRead:
      return Tell(NoteKind::kFailure, line, MessageOf(line.text));
    default:
      return;
  }
}

void LogStory::TakeTrigger(const LogLine& line, LineMeaning meaning) {
  if (meaning.kind == kEnterArrival) SetTrigger(line.thread, TriggerKind::kAdapter);
  if (meaning.kind == kEnterAccount) SetTrigger(line.thread, TriggerKind::kAccount);
  if (meaning.kind != kTaskMade) return;
  ++m_process.triggers;
  Announce();
  m_listener.OnTrigger({.kind = TakeTriggerOf(line.thread), .at = At(line)});
}

void LogStory::SetTrigger(std::string_view thread, TriggerKind kind) {
  TakeTriggerOf(thread);
  if (m_threads.size() == kMostThreads) m_threads.erase(m_threads.begin());
  m_threads.push_back({.thread = std::string(thread), .kind = kind});
}

// What the thread is at; it makes one task of it.
TriggerKind LogStory::TakeTriggerOf(std::string_view thread) {
  const auto found = std::ranges::find(m_threads, thread, &ThreadTask::thread);
  if (found == m_threads.end()) return TriggerKind::kUnknown;
  const TriggerKind kind = found->kind;
  m_threads.erase(found);
  return kind;
}

void LogStory::TakeTask(const LogLine& line, LineMeaning meaning) {
  switch (meaning.kind) {
    case kRunBegins:
      m_worker = line.thread;
      m_run.Begin(m_process.runs + 1, At(line));
      return;
    case kRunEnds:
      if (line.thread == m_worker) EndRun(line, meaning.rest);
      return;
    case kRetry:
      ++m_process.retries;
      return Tell(NoteKind::kRetry, line, UpTo(meaning.rest, ')'));
    case kGiveUp:
      ++m_process.give_ups;
      return Tell(NoteKind::kGiveUp, line);
    default:
      return;
  }
}

void LogStory::TakeRestart(const LogLine& line, LineMeaning meaning) {
  if (meaning.kind == kRestartAsked) {
    ++m_process.restarts;
    Tell(NoteKind::kRestartAsked, line);
  }
  if (meaning.kind == kRestartFailed) Tell(NoteKind::kRestartFailed, line, meaning.rest);
  if (meaning.kind == kNoServiceName) Tell(NoteKind::kRestartFailed, line, MessageOf(line.text));
}

void LogStory::TakeRun(const LogLine& line, LineMeaning meaning) {
  m_run.Take(meaning, line, m_file);
  FollowRadio(line, meaning);
}

void LogStory::FollowRadio(const LogLine& line, LineMeaning meaning) {
  const Command& query = m_run.Get().evidence.query;
  const Command& set = m_run.Get().evidence.set;
  switch (meaning.kind) {
    case kQuerySent:
      ++m_process.queries;
      return;
    case kSetSent:
      ++m_process.sets;
      // Until it is answered it may have been obeyed.
      m_process.radio.reset();
      m_process.radio_at = {};
      return;
    case kAnswer:
      m_process.radio = query.level;
      m_process.radio_at = m_level_at = At(line);
      return;
    case kSetAnswered:
      m_process.radio = kFullFunctionality;
      m_process.radio_at = At(line);
      return;
    case kStatusCode:
      // A set command that was refused leaves the radio as the query found it.
      if (!set.sent) return;
      m_process.radio = query.level;
      m_process.radio_at = m_level_at;
      return;
    default:
      return;
  }
}

void LogStory::EndRun(const LogLine& line, std::string_view rest) {
  m_run.End(rest, At(line));
  m_worker.clear();
  ++m_process.runs;
  const Run& run = m_run.Get();
  if (!run.evidence.platform.empty()) m_process.platform = run.evidence.platform;
  const bool same = m_process.runs > 1 && m_process.GetVerdict() == InfoOf(run.cause).verdict;
  m_process.cause = run.cause;
  m_process.decided = run.decided;
  m_process.deciding = run.deciding;
  if (!same) m_process.since = run.decided;
  Announce();
  m_listener.OnRun(run);
}

void LogStory::Fail(Cause cause, const LogLine& line) {
  m_process.cause = cause;
  m_process.decided = m_process.since = At(line);
  m_process.deciding = line.text.substr(0, kLongestText);
  Tell(NoteKind::kFailure, line, MessageOf(line.text));
}

void LogStory::Tell(NoteKind kind, const LogLine& line, std::string_view text) {
  Announce();
  m_listener.OnNote(
      {.kind = kind, .at = At(line), .text = std::string(text.substr(0, kLongestText))});
}

}  // namespace nuvelta::support
