// Runs a function when its scope is left, on every path. The function must not
// throw.
#pragma once

#include <utility>

namespace nuvelta {

template <class Function>
class ScopeExit {
 public:
  explicit ScopeExit(Function function) : m_function(std::move(function)) {}
  ~ScopeExit() { m_function(); }
  ScopeExit(const ScopeExit&) = delete;
  ScopeExit& operator=(const ScopeExit&) = delete;

 private:
  Function m_function;
};

}  // namespace nuvelta
