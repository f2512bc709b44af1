// Which operating-system calls fail, and the record of those that did.
#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "notebook/model/scenario.h"

namespace nuvelta::virtual_notebook {

// A call of the ports and the failures it can give. `error` is the code that it
// answers unless the scenario names another.
struct CallFailures {
  std::string_view call;
  bool can_fail = false;  // Fault::Kind::kError
  bool can_be_null = false;
  bool can_throw = false;  // kHresult and kBadAlloc
  uint32_t error = 0;
};

// Every call of the ports that can fail, in alphabetical order.
std::span<const CallFailures> KnownCalls();
const CallFailures* FindCall(std::string_view call);

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
  // How often each call was made.
  std::map<std::string, uint32_t, std::less<>> Counts() const;
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
