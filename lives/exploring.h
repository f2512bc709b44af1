// Plays many lives in processes of their own, so that one that ends its process is
// one finding among others.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "lives/judging.h"

namespace nuvelta::explore {

struct ExploreOptions {
  uint64_t lives = 1000;
  uint64_t first_seed = 1;
  std::optional<uint64_t> seconds{};  // stop after this long, whatever is left
  unsigned jobs = 1;
  bool free_running = false;
  std::optional<double> start_delay_ms{};  // added to every life
};

struct Exploration {
  uint64_t lives = 0;
  uint64_t healthy_ends = 0;
  uint64_t crashes = 0;  // that a fault permits
  Counts counts;
  std::vector<uint64_t> failed;  // seeds, in order
  double seconds = 0;
};

// The calling process must have no other thread.
Exploration Explore(const ExploreOptions& options);

// Plays one life in a process of its own. What it broke; a process that died says how.
std::vector<std::string> PlayApart(const nlohmann::json& life, bool free_running);

}  // namespace nuvelta::explore
