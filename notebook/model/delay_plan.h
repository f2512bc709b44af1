// Which operating-system calls take longer than they do on this notebook.
#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "notebook/model/scenario.h"

namespace nuvelta::virtual_notebook {

// Counts the calls that some delay names. Safe on any thread.
class DelayPlan {
 public:
  explicit DelayPlan(std::vector<Delay> delays) : m_delays(std::move(delays)) {}

  // Counts one call; answers how much longer it takes, 0 for most.
  Duration Count(std::string_view call);

 private:
  std::mutex m_mutex;
  const std::vector<Delay> m_delays;
  std::map<std::string, uint32_t, std::less<>> m_counts;
};

}  // namespace nuvelta::virtual_notebook
