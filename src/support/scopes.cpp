#include "support/scopes.h"

#include <algorithm>
#include <array>
#include <functional>

#include "support/log_lines.h"
#include "support/printable.h"

namespace nuvelta::support {

namespace {

// What no log of the service comes near to.
constexpr size_t kDeepest = 64;
constexpr size_t kMostTracedThreads = 1000;
constexpr size_t kLongestScopeName = 100;

// These enter no other scope, and on some path leave no exit line: what the thread enters
// next ends them.
constexpr std::array<std::string_view, 3> kWithoutInner{
    "CMbnWinRtHelper::GetMbimCfun", "CTaskFactory::createTask", "CTaskManager::getTask"};

}  // namespace

void ScopeReader::Close(Thread& thread, size_t depth, uint64_t at, ScopeEnd how,
                        std::deque<Scope>& ended) {
  while (thread.open.size() > depth) {
    Scope& scope = thread.open.back();
    scope.end = std::max(at, scope.begin);
    scope.how = thread.open.size() == depth + 1 ? how : ScopeEnd::kMissing;
    ended.push_back(std::move(scope));
    thread.open.pop_back();
  }
}

// An exit without its entry changes nothing.
void ScopeReader::Leave(Thread& thread, std::string_view name, uint64_t at,
                        std::deque<Scope>& ended) {
  for (size_t depth = thread.open.size(); depth-- > 0;) {
    if (thread.open[depth].name != name) continue;
    return Close(thread, depth, at, ScopeEnd::kExit, ended);
  }
}

void ScopeReader::Take(std::string_view thread_id, std::string_view text, uint64_t at,
                       std::deque<Scope>& ended) {
  auto found = m_threads.find(thread_id);
  if (found == m_threads.end()) {
    if (m_threads.size() == kMostTracedThreads) return;
    found = m_threads.emplace(thread_id, Thread()).first;
  }
  Thread& thread = found->second;
  const bool enters = text.starts_with("h : + ");
  if (enters || text.starts_with("h : - ")) {
    const std::string name = Printable(text.substr(6, kLongestScopeName));
    if (!enters) {
      Leave(thread, name, at, ended);
    } else {
      const bool has_none =
          !thread.open.empty() && std::ranges::count(kWithoutInner, thread.open.back().name) != 0;
      if (has_none) Close(thread, thread.open.size() - 1, thread.last, ScopeEnd::kMissing, ended);
      if (thread.open.size() < kDeepest) {
        thread.open.push_back({.name = name,
                               .thread = std::string(thread_id),
                               .begin = at,
                               .end = at,
                               .depth = static_cast<uint32_t>(thread.open.size())});
      }
    }
  }
  thread.last = at;
}

void ScopeReader::Finish(uint64_t end, std::deque<Scope>& ended) {
  for (auto& [id, thread] : m_threads) {
    for (Scope& scope : thread.open) {
      scope.end = std::max(end, scope.begin);
      scope.how = ScopeEnd::kOpen;
      ended.push_back(std::move(scope));
    }
  }
  m_threads.clear();
}

}  // namespace nuvelta::support
