// Which stories cannot be played with the real executable.
#pragma once

#include <optional>
#include <string>

#include "notebook/model/scenario.h"

namespace nuvelta::wine_notebook {

// Why not; none when it can be played.
std::optional<std::string> WhyNotUnderWine(const virtual_notebook::Scenario& scenario);

}  // namespace nuvelta::wine_notebook
