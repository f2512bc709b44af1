// The decision of a run as its log lines tell it: every order of them that may be, and
// the one after which the radio is set on.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "lives/findings.h"
#include "support/log_lines.h"

namespace nuvelta::explore {

using support::LogLine;

class DecisionRules {
 public:
  explicit DecisionRules(Findings& findings) : m_findings(findings) {}

  void Take(const LogLine& line);

 private:
  Findings& m_findings;
  std::string_view m_worker;        // the thread of the run, empty between runs
  std::string m_run;                // a letter for each line of the run that tells
  std::optional<int64_t> m_answer;  // of the run's query
};

}  // namespace nuvelta::explore
