// What every virtual port needs: the scheduler, the faults, the last error.
#pragma once

#include <cstdint>
#include <optional>

#include "notebook/machine/scheduler.h"
#include "notebook/model/delay_plan.h"
#include "notebook/model/fault_plan.h"
#include "notebook/model/port_calls.h"

namespace nuvelta::virtual_notebook {

struct Context {
  Scheduler& scheduler;
  FaultPlan& faults;
  DelayPlan* delays = nullptr;  // null: no call is late

  // Counts a call that answers a status code; the code to answer when it fails.
  std::optional<uint32_t> Error(KnownCall call);
  // Counts a call that reports through the last error, which is then set; true
  // when it fails.
  bool Fails(KnownCall call);
  // Counts a call that may throw or answer a null object; false for the latter.
  bool Answers(KnownCall call);

  // Counts a call, which spends its time and its delay here; answers the fault to give.
  std::optional<Fault> Count(KnownCall call);

  static void SetLastError(uint32_t error) { Scheduler::ThreadWord() = error; }
};

}  // namespace nuvelta::virtual_notebook
