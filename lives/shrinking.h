// Makes a failing life small.
#pragma once

#include <functional>

#include <nlohmann/json.hpp>

namespace nuvelta::explore {

// Leaves out events, faults and members of the notebook, and simplifies times, as
// long as `fails` says that the rest still fails. What is left fails, and a healthy
// end stays whole. `fails` may be handed lives that no reader accepts.
nlohmann::json Shrink(nlohmann::json life,
                      const std::function<bool(const nlohmann::json& life)>& fails);

}  // namespace nuvelta::explore
