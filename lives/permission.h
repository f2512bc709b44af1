// Whether the rules allow the radio to be switched on, worked out from the notebook
// itself and apart from the service's own reading of it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "notebook/model/scenario.h"

namespace nuvelta::explore {

class Permission {
 public:
  explicit Permission(const virtual_notebook::Scenario& scenario);

  // Whether the notebook allowed it at some moment between the two, which count
  // from the story's start.
  bool AllowedBetween(virtual_notebook::Duration from, virtual_notebook::Duration to) const;
  // Whether it allows it as the last event leaves it.
  bool AllowedAtEnd() const;

 private:
  // What events can change and the rules look at.
  struct State {
    virtual_notebook::Duration since{};
    std::optional<uint8_t> support_verify;  // the switches' first bytes, when usable
    std::optional<uint8_t> disable_verify;
    std::string modem_id;
    bool modem_present = false;
  };

  bool Allows(const State& state) const;
  std::string DeviceId(const State& state) const;
  bool PlatformAllows(const std::string& device_id) const;

  std::string m_platform_key;
  bool m_fcc_mode = false;
  std::vector<virtual_notebook::Device> m_devices;
  std::vector<State> m_states;  // in order of time
};

// Whether the service can see the modem's adapter as the modem's.
bool HasExpectedAdapter(const virtual_notebook::Notebook& notebook);

}  // namespace nuvelta::explore
