// The commands of one run after another: the radio is set on only after a query of
// the same run that answered neither 1, -1 nor -2, and only where that is allowed.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>

#include "lives/findings.h"
#include "notebook/model/scenario.h"

namespace nuvelta::explore {

class CommandWatch {
 public:
  using Duration = virtual_notebook::Duration;
  // Whether the rules allow the radio at some moment between two, from the start.
  using Allowed = std::function<bool(Duration from, Duration to)>;

  CommandWatch(Findings& findings, Allowed allowed)
      : m_findings(findings), m_allowed(std::move(allowed)) {}

  // A run is on, or none is. Told at least once at the moment at which it begins.
  void OnRun(bool running, Duration now);
  // A command leaves for the modem.
  void OnQuery(std::span<const uint8_t> payload);
  void OnSet(std::span<const uint8_t> payload, Duration now);
  // What a query's successful answer holds.
  void OnAnswer(int32_t level);

  uint64_t Sets() const { return m_sets; }

 private:
  Findings& m_findings;
  const Allowed m_allowed;
  bool m_running = false;
  Duration m_begin{};
  int m_queries = 0;
  bool m_set = false;
  std::optional<int32_t> m_answer;
  uint64_t m_sets = 0;
};

}  // namespace nuvelta::explore
