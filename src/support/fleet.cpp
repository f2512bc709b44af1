#include "support/fleet.h"

namespace nuvelta::support {

void Fleet::Add(const NotebookVerdict& verdict) {
  ++m_notebooks;
  Row& row = m_rows[{verdict.last.platform, verdict.last.cause}];
  ++row.count;
  const auto known = [](const std::string& time) { return !time.empty(); };
  const bool earlier = row.first_seen.empty() || verdict.first_seen < row.first_seen;
  if (known(verdict.first_seen) && earlier) row.first_seen = verdict.first_seen;
  if (verdict.last_seen > row.last_seen) row.last_seen = verdict.last_seen;
}

}  // namespace nuvelta::support
