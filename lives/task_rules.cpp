#include "lives/task_rules.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string>

#include "lives/task_watch.h"

namespace nuvelta::explore {

using support::Contains;
using support::LineKind;
using support::NumberBehind;

namespace {

// Between the two orders of a loose log lie at most an exception's two and the
// one of a retry.
constexpr int64_t kLooseSlack = 3;

// The lines with which a run asks for another one.
constexpr std::array<std::string_view, 6> kRetryLines{
    "i :   MBIM Device is not nuvelta device.",
    "i :   MBIM Device is not exist.",
    "i :   get cfun fail,retry",
    "i :   CFUN = -2, mbim not ready ,will retry",
    "e :   SetMbimCfun failed, will retry!!!",
    "i :   bIsException happend ,will add Exception times and retry"};

}  // namespace

void TaskRules::Expect(bool holds, const char* rule) {
  if (!holds) m_findings->Add("log: " + std::string(rule) + ": " + std::string(m_text));
}

void TaskRules::ExpectBudget(int64_t logged, int64_t slack) {
  Expect(m_task.has_value(), "a budget without a task");
  if (!m_task || std::abs(m_task->retry_times - logged) <= slack) return;
  m_findings->Add("log: granted and spent make " + std::to_string(m_task->retry_times) + ": " +
                  std::string(m_text));
  m_task->retry_times = logged;
}

void TaskRules::TakeQueue(std::string_view text) {
  const int64_t slack = m_loose ? kLooseSlack : 0;
  if (Contains(text, "there are not exist iPriority = 0 ")) {
    Expect(!m_level && !m_task, "the level is there already");
    m_level = true;
    m_task = Task{};
  } else if (Contains(text, "; push back new task :")) {
    Expect(m_level && !m_task, "a second task");
    m_task = Task{};
  } else if (const auto before = NumberBehind(text, "do not add the new task(")) {
    const bool of_zero = Contains(text, ") == 0 ,so");
    Expect(of_zero == (*before == 0), "the wrong top-up");
    ExpectBudget(*before, slack);
    if (m_task) m_task->retry_times += of_zero ? 1 : 2;
  } else if (const auto cleaned = NumberBehind(text, " retry times = ")) {
    ExpectBudget(*cleaned, slack);
    if (!m_loose) Expect(Contains(text, "]: do not clean") == m_running, "dealing or not");
    if (m_task) m_task->retry_times = 0;
    m_cleaned = true;
  } else if (const auto printed = NumberBehind(text, ", retry time = ")) {
    Expect(text.starts_with("i :   [1]:"), "a second task is listed");
    ExpectBudget(*printed, m_loose && m_cleaned ? slack : 0);
    if (m_task) m_task->retry_times = *printed;
    m_cleaned = false;
  }
}

void TaskRules::BeginRun(std::string_view thread) {
  Expect(!m_running, "a run begins while another is on");
  Expect(m_task.has_value(), "a run without a task");
  if (m_task) {
    Expect(m_loose || m_task->retry_times > 0, "a run without a budget");
    Expect(m_task->exceptions <= kMostExceptions, "a run after four exceptions");
  }
  m_running = true;
  m_worker = thread;
  m_at_commands = m_raised = m_wants_retry = m_ended = false;
}

void TaskRules::EndRun() {
  Expect(m_running, "an end without a run");
  Expect(!m_raised, "an exception that is not counted");
  m_running = false;
  m_ended = true;
}

void TaskRules::TakeRun(const LogLine& line) {
  const std::string_view text = line.text;
  if (m_kind == LineKind::kRunBegins) BeginRun(line.thread);
  if (!m_running || line.thread != m_worker) return;
  if (text == "h : + CMbnWinRtHelper::GetMbimCfun") m_at_commands = true;
  if (Contains(text, ":   exception ") && m_at_commands) m_raised = true;
  if (std::ranges::find(kRetryLines, text) != kRetryLines.end()) m_wants_retry = true;
  if (text == kRetryLines.back()) {
    Expect(m_raised, "an exception from nowhere");
    m_raised = false;
    if (!m_task) return;
    ++m_task->exceptions;
    m_task->retry_times += 2;
  }
}

void TaskRules::TakeWorker(std::string_view text) {
  const int64_t slack = m_loose ? kLooseSlack : 0;
  if (m_kind == LineKind::kRunEnds) {
    EndRun();
  } else if (m_kind == LineKind::kRetry) {
    Expect(m_ended && m_wants_retry, "a retry that no run asked for");
    ExpectBudget(NumberBehind(text, ",retry times(").value_or(INT32_MIN), slack);
    if (m_task) --m_task->retry_times;
    m_ended = false;
  } else if (m_kind == LineKind::kGiveUp) {
    const int64_t times = NumberBehind(text, ",retry times(").value_or(INT32_MAX);
    ExpectBudget(times, slack);
    Expect(times <= 0, "given up with a budget");
    m_given_up = true;
  } else if (text.starts_with("i :   find the same task,will delete the task ")) {
    Expect(m_task && (m_given_up || (m_ended && !m_wants_retry)), "removed before its end");
    m_task.reset();
    m_given_up = m_ended = false;
  } else if (m_kind == LineKind::kRestartBegins) {
    Expect(m_task && m_task->exceptions > kMostExceptions, "a restart without four exceptions");
  }
}

// A process knows nothing of the one before.
void TaskRules::Begin() {
  const LineKind kind = m_kind;
  *this = TaskRules(*m_findings, m_loose ? Order::kLoose : Order::kExact);
  m_kind = kind;
}

void TaskRules::Take(const LogLine& line) {
  m_kind = support::MeaningOf(line.text).kind;
  if (m_kind == LineKind::kProcessBegins) Begin();
  m_text = line.text;
  TakeQueue(line.text);
  TakeRun(line);
  TakeWorker(line.text);
}

}  // namespace nuvelta::explore
