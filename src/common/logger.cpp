#include "common/logger.h"

#include <array>
#include <cstdio>

#include <spdlog/spdlog.h>

#include "platform/clock.h"
#include "platform/platform.h"
#include "platform/threads.h"

namespace nuvelta {

namespace {

constexpr size_t kMessageSize = 4096;

using ThreadIdText = std::array<char, 20>;

ThreadIdText CurrentThreadIdText() {
  ThreadIdText text{};
  std::snprintf(text.data(), text.size(), "%08x", platform::Os().threads.GetCurrentThreadId());
  return text;
}

void Send(spdlog::logger& logger, spdlog::level::level_enum level, const fmt::memory_buffer& text) {
  logger.log(platform::Os().clock.Now(), spdlog::source_loc{}, level,
             spdlog::string_view_t(text.data(), text.size()));
}

struct LevelRow {
  spdlog::level::level_enum level;
  fmt::string_view line;
};

// Indexed by WriteLog's level.
constexpr std::array<LevelRow, 7> kLevels{{
    {spdlog::level::off, ""},
    {spdlog::level::err, "{0} e :   {1}"},
    {spdlog::level::info, "{0} i :   {1}"},
    {spdlog::level::warn, "{0} w :   {1}"},
    {spdlog::level::info, "{0} i :   {1}"},
    {spdlog::level::info, "{1}"},
    {spdlog::level::trace, "{0} h :   {1}, {2}"},
}};

}  // namespace

CLogger& CLogger::GetInstance() {
  static CLogger instance;
  return instance;
}

void CLogger::WriteLog(int iLevel, const char* pszFunction, const char* pszFormat, ...) {
  va_list arguments;
  va_start(arguments, pszFormat);
  WriteLogV(iLevel, pszFunction, pszFormat, arguments);
  va_end(arguments);
}

void CLogger::WriteLogV(int iLevel, const char* pszFunction, const char* pszFormat,
                        va_list arguments) {
  const std::lock_guard lock(m_mutex);
  if (iLevel < kLogError || iLevel > kLogTrace || m_logger == nullptr) return;
  const LevelRow& row = kLevels[static_cast<size_t>(iLevel)];
  if (!m_logger->should_log(row.level)) return;

  std::array<char, kMessageSize> szMessage{};
  std::vsnprintf(szMessage.data(), szMessage.size(), pszFormat, arguments);
  const ThreadIdText szThreadId = CurrentThreadIdText();
  const auto line = fmt::runtime(row.line);
  fmt::memory_buffer text;
  if (iLevel == kLogTrace) {
    fmt::format_to(fmt::appender(text), line, szThreadId.data(), pszFunction, szMessage.data());
  } else {
    fmt::format_to(fmt::appender(text), line, szThreadId.data(), szMessage.data());
  }
  Send(*m_logger, row.level, text);
}

void CLogger::WriteTraceScope(char sign, const char* pszFuncName) {
  if (m_logger == nullptr || !m_logger->should_log(spdlog::level::trace)) return;
  fmt::memory_buffer text;
  fmt::format_to(fmt::appender(text), "{0} h : {1} {2}", CurrentThreadIdText().data(), sign,
                 pszFuncName);
  Send(*m_logger, spdlog::level::trace, text);
}

void CLogger::MakeAfresh() { m_logger.reset(); }

void LogInfo(const char* pszFunction, const char* pszFormat, ...) {
  va_list arguments;
  va_start(arguments, pszFormat);
  CLogger::GetInstance().WriteLogV(kLogInfo, pszFunction, pszFormat, arguments);
  va_end(arguments);
}

void LogError(const char* pszFunction, const char* pszFormat, ...) {
  va_list arguments;
  va_start(arguments, pszFormat);
  CLogger::GetInstance().WriteLogV(kLogError, pszFunction, pszFormat, arguments);
  va_end(arguments);
}

}  // namespace nuvelta
