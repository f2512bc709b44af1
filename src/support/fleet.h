// Many notebooks in one table: how often each cause holds, by platform key.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>

#include "support/explain.h"

namespace nuvelta::support {

class Fleet {
 public:
  struct Row {
    uint64_t count = 0;
    std::string first_seen{};
    std::string last_seen{};
  };

  void Add(const NotebookVerdict& verdict);
  uint64_t Notebooks() const { return m_notebooks; }
  // By platform key (empty: not known) and cause, in that order.
  const std::map<std::pair<std::string, Cause>, Row>& Rows() const { return m_rows; }

 private:
  uint64_t m_notebooks = 0;
  std::map<std::pair<std::string, Cause>, Row> m_rows;
};

}  // namespace nuvelta::support
