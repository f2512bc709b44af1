// The runs of a process's task as the notebook knows them, to be held against what its log
// tells of them.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "lives/run_answers.h"
#include "lives/task_watch.h"
#include "notebook/model/scenario.h"

namespace nuvelta::explore {

// Commands of one kind, by what the call that sends them came to.
struct Sendings {
  uint64_t came_back = 0;
  uint64_t null = 0;  // of these: without an operation
  uint64_t threw = 0;
};

// What a process did.
struct ProcessTruth {
  uint32_t process = 0;
  bool has_log = false;  // its first line was written
  bool lost_lines = false;
  std::vector<const char*> causes{};  // of the runs that ended
  bool unfinished_run = false;
  bool no_worker = false;
  bool no_stop_event = false;
  uint64_t retries = 0;
  uint64_t give_ups = 0;
  Sendings queries{};
  Sendings sets{};
  // The modem's last word on its radio; none while a set command has no answer.
  std::optional<int32_t> radio{};
};

class RunWatch {
 public:
  RunWatch(const TaskWatch& tasks, const virtual_notebook::Notebook& notebook)
      : m_tasks(tasks), m_notebook(notebook) {}

  // The record of the run that the calling thread is in; null when it is in none.
  RunAnswers* AtHand();
  // The run's visit to the modem; null outside of one.
  ModemVisit* Visit();

  // The worker asks for the modem.
  void OnVisit();
  // A call of the visit threw, or answered null where an object has to be used.
  void OnRaised();
  // A command was sent: came back with an operation, or without, or the call threw.
  void OnSent(bool has_operation);
  void OnSendingThrew(bool set);
  // The operation that is waited for; its end comes on another thread.
  std::shared_ptr<platform::AsyncStatus> OnOperation();
  void OnWaited();
  void OnStatus(uint32_t code);
  void OnLevel(int32_t level);

  void OnNoWorker() { m_truth.no_worker = true; }
  void OnNoStopEvent() { m_truth.no_stop_event = true; }
  // The worker pauses: a run has ended.
  void OnRunEnds();
  // The process is over.
  const ProcessTruth& Finish();

 private:
  bool IsSet() const { return m_answers && m_answers->visits.size() > 2; }

  const TaskWatch& m_tasks;
  const virtual_notebook::Notebook& m_notebook;
  std::optional<RunAnswers> m_answers;
  std::shared_ptr<platform::AsyncStatus> m_end;  // of the command at hand, as far as it has come
  ProcessTruth m_truth;
};

}  // namespace nuvelta::explore
