// What an event of a story does: one rule for every stage that a story is played on.
#pragma once

#include <string>

#include "notebook/model/control_rules.h"
#include "notebook/model/scenario.h"

namespace nuvelta::virtual_notebook {

// The notebook that an action is done to. What is sent reaches the service where there
// is one, and where it has registered for it.
class ActionTarget {
 public:
  virtual ~ActionTarget() = default;

  virtual void Start() = 0;
  virtual void Stop() = 0;
  virtual void Kill() = 0;
  virtual void SendControl(const SentControl& sent) = 0;
  virtual void SendDeviceEvent(uint32_t event_type, const std::string& interface_name) = 0;
  virtual void SendPowerEvent(uint32_t type) = 0;
  virtual void SendPowerSetting(const platform::Guid& setting, uint32_t data) = 0;

  // The modem is there from now on, or no longer.
  virtual void InstallModem(const ModemDescription& modem) = 0;
  virtual void RemoveModem() = 0;
  virtual void ChangeModem(const Action::ModemChange& change) = 0;
  // One comes (true) or goes, and the service is told.
  virtual void ChangeAccounts(bool added) = 0;
  virtual void WriteRecord(const EventRecord& record) = 0;
  virtual void SetRegistryValue(const std::string& key, const std::string& name,
                                const RegistryValue& value) = 0;
  virtual void DeleteRegistryValue(const std::string& key, const std::string& name) = 0;
};

// `modem` is what the notebook's is like by then, whether it is there or not.
void PlayAction(const Action& action, const ModemDescription& modem, ActionTarget& target);

}  // namespace nuvelta::virtual_notebook
