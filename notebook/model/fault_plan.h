// Which operating-system calls fail, and the record of those that did.
#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "notebook/model/scenario.h"

namespace nuvelta::virtual_notebook {

// A fault that was injected.
struct FiredFault {
  std::string call;
  uint32_t nth = 0;  // which call of that name
  Fault::Kind kind = Fault::Kind::kError;
  uint32_t code = 0;
};

// Counts the calls and says which fail. Safe on any thread.
class FaultPlan {
 public:
  explicit FaultPlan(std::vector<Fault> faults);

  // Counts one call; answers the fault to give, when one is due.
  std::optional<Fault> Count(std::string_view call);

  std::vector<FiredFault> Fired() const;
  // Faults that were planned and never came due.
  std::vector<Fault> NotFired() const;

 private:
  mutable std::mutex m_mutex;
  std::vector<Fault> m_faults;
  std::vector<bool> m_fired_once;
  std::vector<FiredFault> m_fired;
  std::map<std::string, uint32_t, std::less<>> m_counts;
};

}  // namespace nuvelta::virtual_notebook
