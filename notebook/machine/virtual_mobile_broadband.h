// The mobile-broadband stack of the virtual notebook, on its modem.
#pragma once

#include <memory>
#include <mutex>
#include <vector>

#include "notebook/machine/context.h"
#include "notebook/model/modem_model.h"
#include "platform/mobile_broadband.h"

namespace nuvelta::virtual_notebook {

class VirtualMobileBroadband final : public platform::MobileBroadband {
 public:
  VirtualMobileBroadband(Context& context, ModemModel& modem, uint32_t accounts);
  ~VirtualMobileBroadband() override;

  std::shared_ptr<platform::Modem> GetDefault() override;
  std::shared_ptr<platform::DataWriter> CreateDataWriter() override;
  std::shared_ptr<platform::AccountWatcher> CreateAccountWatcher() override;

  // For the story: an account appears or disappears.
  void ChangeAccounts(bool added);
  void EndProcess();

 private:
  class Watcher;

  Context& m_context;
  ModemModel& m_modem;
  std::mutex m_mutex;
  uint32_t m_accounts;
  std::vector<std::shared_ptr<Watcher>> m_watchers;
};

}  // namespace nuvelta::virtual_notebook
