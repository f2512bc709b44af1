// A stage whose time stands still: what is to come later comes when the test says.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <vector>

#include "notebook/model/fault_plan.h"
#include "notebook/model/modem_model.h"
#include "wine/hardware/modem_stage.h"

namespace nuvelta::wine {

// What Stage answers. Put back to a healthy modem before each test.
class TestStage final : public ModemStage {
 public:
  static TestStage& Get();

  void Reset(virtual_notebook::ModemDescription modem = {},
             std::vector<virtual_notebook::Fault> faults = {}, uint32_t accounts = 0);

  // Runs what waits, soonest first and what it brings about too, each on a thread of
  // its own; answers how much there was.
  size_t RunAll();
  // An account comes or goes.
  void ChangeAccounts(bool added);

  std::vector<virtual_notebook::ModemCommand> Commands() const { return m_modem->Commands(); }
  std::vector<virtual_notebook::FiredFault> Fired() const { return m_faults->Fired(); }

  std::optional<virtual_notebook::Fault> Count(virtual_notebook::KnownCall call) override;
  virtual_notebook::ModemDescription Modem() override { return m_modem->Description(); }
  virtual_notebook::ModemReply Execute(bool set, uint32_t command_id,
                                       std::vector<uint8_t> payload) override;
  void RunLater(virtual_notebook::Duration after, std::function<void()> work) override;
  uint32_t Accounts() override { return m_accounts; }
  void ListenToAccounts(std::function<void(bool added)> listener) override;

 private:
  std::optional<virtual_notebook::ModemModel> m_modem;
  std::optional<virtual_notebook::FaultPlan> m_faults;
  std::multimap<virtual_notebook::Duration, std::function<void()>> m_later;
  uint32_t m_accounts = 0;
  std::vector<std::function<void(bool added)>> m_listeners;
};

}  // namespace nuvelta::wine
