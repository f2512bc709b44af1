// What the fake mobile-broadband classes need to know of the story that is being
// played: the modem, the accounts, the faults, the story's time.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "notebook/model/modem_model.h"
#include "notebook/model/port_calls.h"
#include "notebook/model/scenario.h"

namespace nuvelta::wine {

// Safe on any thread. Nothing throws but std::bad_alloc.
class ModemStage {
 public:
  virtual ~ModemStage() = default;

  // Counts a call, which spends its time; answers the fault to give, when one is due.
  virtual std::optional<virtual_notebook::Fault> Count(virtual_notebook::KnownCall call) = 0;

  virtual virtual_notebook::ModemDescription Modem() = 0;
  virtual virtual_notebook::ModemReply Execute(bool set, uint32_t command_id,
                                               std::vector<uint8_t> payload) = 0;
  // Runs `work` once, `after` from now in story time, on a thread of the platform.
  virtual void RunLater(virtual_notebook::Duration after, std::function<void()> work) = 0;

  // Accounts that are present now.
  virtual uint32_t Accounts() = 0;
  // `listener` hears of every account that comes (true) or goes (false) from now
  // on, each on a thread of the platform.
  virtual void ListenToAccounts(std::function<void(bool added)> listener) = 0;
};

// The stage of this process; outlives every fake. The virtual hardware and the
// tests of the fakes each supply one.
ModemStage& Stage();

}  // namespace nuvelta::wine
