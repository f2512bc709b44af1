// The modem of a captured notebook as a scenario has it.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "support/capture/captured_notebook.h"

namespace nuvelta::support {

// Which of the adapters and devices are the modem's.
struct ModemPlaces {
  std::optional<size_t> adapter{}, device{};
};

struct ModemScenario {
  ModemPlaces places{};
  std::string modem{};   // JSON
  std::string faults{};  // JSON; empty: none
  std::vector<std::string> assumed{};
};

ModemScenario MakeModemScenario(const CapturedNotebook& notebook);

}  // namespace nuvelta::support
