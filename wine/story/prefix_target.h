// What an event does to the prefix itself: to Wine's device tables and its registry.
#pragma once

#include <string>

#include "notebook/model/play_action.h"

namespace nuvelta::wine {

// All of these throw std::runtime_error.
class PrefixTarget : public virtual_notebook::ActionTarget {
 public:
  void InstallModem(const virtual_notebook::ModemDescription& modem) override;
  void RemoveModem() override;
  void ChangeModem(const virtual_notebook::Action::ModemChange& change) override;
  void SetRegistryValue(const std::string& key, const std::string& name,
                        const virtual_notebook::RegistryValue& value) override;
  void DeleteRegistryValue(const std::string& key, const std::string& name) override;
};

}  // namespace nuvelta::wine
