#include "lives/run_watch.h"

#include "lives/run_truth.h"
#include "notebook/machine/scheduler.h"

namespace nuvelta::explore {

using platform::AsyncStatus;
using virtual_notebook::Scheduler;

namespace {

constexpr int32_t kRadioIsOn = 1;

}  // namespace

RunAnswers* RunWatch::AtHand() {
  if (!m_tasks.IsWorker(Scheduler::CurrentThread()) || !m_tasks.IsRunning()) return nullptr;
  if (!m_answers) m_answers.emplace();
  return &*m_answers;
}

ModemVisit* RunWatch::Visit() {
  RunAnswers* const run = AtHand();
  return run == nullptr || run->visits.empty() ? nullptr : &run->visits.back();
}

void RunWatch::OnVisit() {
  if (RunAnswers* const run = AtHand()) run->visits.emplace_back();
}

void RunWatch::OnRaised() {
  if (ModemVisit* const visit = Visit()) visit->raised = true;
}

void RunWatch::OnSent(bool has_operation) {
  if (Visit() == nullptr) return;
  Sendings& sendings = IsSet() ? m_truth.sets : m_truth.queries;
  ++sendings.came_back;
  sendings.null += has_operation ? 0 : 1;
  // Whether it obeys, only its answer tells.
  if (IsSet()) m_truth.radio.reset();
}

void RunWatch::OnSendingThrew(bool set) { ++(set ? m_truth.sets : m_truth.queries).threw; }

std::shared_ptr<AsyncStatus> RunWatch::OnOperation() {
  m_end = std::make_shared<AsyncStatus>(AsyncStatus::kStarted);
  return m_end;
}

void RunWatch::OnWaited() {
  ModemVisit* const visit = Visit();
  if (visit != nullptr && m_end != nullptr) visit->end = *m_end;
}

void RunWatch::OnStatus(uint32_t code) {
  ModemVisit* const visit = Visit();
  if (visit == nullptr) return;
  visit->status = code;
  if (!IsSet()) return;
  // Refused, it leaves the radio as the query has found it.
  m_truth.radio = code == 0 ? kRadioIsOn : m_answers->visits[1].level;
}

void RunWatch::OnLevel(int32_t level) {
  ModemVisit* const visit = Visit();
  if (visit == nullptr || IsSet()) return;
  visit->level = level;
  m_truth.radio = level;
}

void RunWatch::OnRunEnds() {
  m_truth.causes.push_back(CauseOf(m_answers.value_or(RunAnswers()), m_notebook));
  m_answers.reset();
  m_end.reset();
}

const ProcessTruth& RunWatch::Finish() {
  // As the last step under watch has left it.
  m_truth.unfinished_run = m_tasks.IsRunning();
  m_truth.retries = m_tasks.Retries();
  m_truth.give_ups = m_tasks.GiveUps();
  return m_truth;
}

}  // namespace nuvelta::explore
