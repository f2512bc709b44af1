#include "notebook/model/fault_plan.h"

#include <utility>

namespace nuvelta::virtual_notebook {

namespace {

bool Covers(const Fault& fault, std::string_view call, uint32_t nth) {
  return fault.call == call && nth >= fault.nth &&
         (fault.count == 0 || nth - fault.nth < fault.count);
}

}  // namespace

FaultPlan::FaultPlan(std::vector<Fault> faults)
    : m_faults(std::move(faults)), m_fired_once(m_faults.size()) {}

std::optional<Fault> FaultPlan::Count(std::string_view call) {
  const std::lock_guard lock(m_mutex);
  auto count = m_counts.find(call);
  if (count == m_counts.end()) count = m_counts.emplace(call, 0).first;
  const uint32_t nth = ++count->second;
  for (size_t i = 0; i < m_faults.size(); ++i) {
    const Fault& fault = m_faults[i];
    if (!Covers(fault, call, nth)) continue;
    m_fired_once[i] = true;
    m_fired.push_back({.call = fault.call, .nth = nth, .kind = fault.kind, .code = fault.code});
    return fault;
  }
  return {};
}

std::vector<FiredFault> FaultPlan::Fired() const {
  const std::lock_guard lock(m_mutex);
  return m_fired;
}

std::vector<Fault> FaultPlan::NotFired() const {
  const std::lock_guard lock(m_mutex);
  std::vector<Fault> rest;
  for (size_t i = 0; i < m_faults.size(); ++i) {
    if (!m_fired_once[i]) rest.push_back(m_faults[i]);
  }
  return rest;
}

}  // namespace nuvelta::virtual_notebook
