#include "notebook/model/delay_plan.h"

#include <algorithm>

namespace nuvelta::virtual_notebook {

Duration DelayPlan::Count(std::string_view call) {
  const auto named = [&](const Delay& delay) { return delay.call == call; };
  if (std::ranges::none_of(m_delays, named)) return {};
  const std::lock_guard lock(m_mutex);
  const uint32_t nth = ++m_counts[std::string(call)];
  Duration sum{};
  for (const Delay& delay : m_delays) {
    const bool due = nth >= delay.nth && (delay.count == 0 || nth - delay.nth < delay.count);
    if (named(delay) && due) sum += delay.late;
  }
  return sum;
}

}  // namespace nuvelta::virtual_notebook
