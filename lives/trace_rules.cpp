#include "lives/trace_rules.h"

#include <algorithm>
#include <string>
#include <utility>

#include "support/line_kinds.h"

namespace nuvelta::explore {

namespace {

constexpr std::string_view kEntry = "h : + ";
constexpr std::string_view kExit = "h : - ";
constexpr std::string_view kCreateTask = "CTaskFactory::createTask";
constexpr std::string_view kGetTask = "CTaskManager::getTask";
constexpr std::string_view kGetInstance = "CTaskManager::GetTaskManagerInstance";
constexpr std::string_view kWorker = "CTaskManager::dealTaskThread";
constexpr std::string_view kGetCfun = "CMbnWinRtHelper::GetMbimCfun";
constexpr std::string_view kDoJob = "CTaskAuthModule::doJob";
constexpr std::string_view kRetention = "DeleteFileWhileExceedMaxSizeAndTime";
constexpr std::string_view kServiceMain = "ServiceMain";
constexpr std::string_view kIsDisableVerify = "CommonUtil::IsDisableVerify";

}  // namespace

void TraceRules::Break(const char* rule, std::string_view name) {
  m_findings.Add("trace: " + std::string(rule) + ": " + std::string(name));
}

std::string_view TraceRules::Innermost(std::string_view thread) const {
  const auto found = m_threads.find(thread);
  if (found == m_threads.end() || found->second.scopes.empty()) return {};
  return found->second.scopes.back().name;
}

void TraceRules::CheckPlace(const Thread& thread, std::string_view name) {
  const std::string_view around = thread.scopes.empty() ? "" : thread.scopes.back().name;
  if (name == "CTaskManager::CTaskManager" || name == "CMbnWinRtHelper::Init") {
    bool& done = name == "CMbnWinRtHelper::Init" ? m_watcher_set_up : m_constructed;
    if (done) Break("entered for the second time", name);
    done = true;
    if (around != kGetInstance) Break("entered outside of the first use", name);
  }
  if ((name == "CTaskManager::retry" || name == "CTaskManager::popTask") && around != kWorker) {
    Break("entered outside of the worker's loop", name);
  }
  const auto same = [&](const Scope& scope) { return scope.name == name; };
  if (std::ranges::any_of(thread.scopes, same)) Break("entered inside of itself", name);
}

void TraceRules::Enter(Thread& thread, std::string_view name) {
  CheckPlace(thread, name);
  if (name != kCreateTask) thread.scopes.push_back({.name = name});
}

void TraceRules::Exit(Thread& thread, std::string_view name) {
  if (name == kIsDisableVerify) {
    if (!thread.owes_exit) Break("an exit line without a reason", name);
    thread.owes_exit = false;
    return;
  }
  if (thread.scopes.empty() || thread.scopes.back().name != name) {
    Break("an exit line without its entry", name);
    return;
  }
  Scope& scope = thread.scopes.back();
  if (std::exchange(scope.exits_twice, false)) return;
  thread.scopes.pop_back();
}

void TraceRules::TakeMessage(Thread& thread, std::string_view text) {
  if (text.starts_with("i :   find reg value is ")) thread.owes_exit = true;
  if (thread.scopes.empty()) return;
  Scope& scope = thread.scopes.back();
  if ((scope.name == kGetTask && text.starts_with("i :   after  front list size = ")) ||
      (scope.name == kGetCfun && text == "i :   module current version not support MA,return")) {
    thread.scopes.pop_back();  // neither leaves an exit line when it returns there
  } else if (scope.name == kDoJob && text == "i :   MBIM Device is not exist.") {
    scope.exits_twice = true;
  }
}

void TraceRules::Finish() {
  const auto serves = [](const auto& entry) {
    const auto& scopes = entry.second.scopes;
    return !scopes.empty() && scopes.front().name == kServiceMain;
  };
  if (m_returned && std::ranges::any_of(m_threads, serves)) Break("no exit line", kServiceMain);
}

void TraceRules::Take(const LogLine& line) {
  if (support::MeaningOf(line.text).kind == support::LineKind::kProcessBegins) {
    Finish();
    // The retention's thread starts with the logger, before the first line is written.
    std::erase_if(m_threads, [](const auto& entry) {
      const auto& scopes = entry.second.scopes;
      return scopes.empty() || scopes.front().name != kRetention;
    });
    m_constructed = m_watcher_set_up = m_returned = false;
  }
  if (line.text == "i :   N auth Monitor Service: Main: Exit") m_returned = true;
  Thread& thread = m_threads[line.thread];
  const bool owed_exit = thread.owes_exit;
  if (line.text.starts_with(kEntry)) {
    Enter(thread, line.text.substr(kEntry.size()));
  } else if (line.text.starts_with(kExit)) {
    Exit(thread, line.text.substr(kExit.size()));
  } else {
    TakeMessage(thread, line.text);
  }
  if (owed_exit && thread.owes_exit) Break("no exit line", kIsDisableVerify);
}

}  // namespace nuvelta::explore
