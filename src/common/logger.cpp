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

// Formats and queues one record. A log that cannot take it (out of memory, or
// already closed while the process exits) must not harm its caller.
template <class... Texts>
void Send(spdlog::logger& logger, spdlog::level::level_enum level, fmt::string_view line,
          const Texts&... texts) noexcept {
  try {
    fmt::memory_buffer text;
    fmt::format_to(fmt::appender(text), fmt::runtime(line), texts...);
    logger.log(platform::Os().clock.Now(), spdlog::source_loc{}, level,
               spdlog::string_view_t(text.data(), text.size()));
  } catch (...) {
  }
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
  // Never destroyed: the worker may still log while the process exits.
  static auto* const instance = new CLogger;
  return *instance;
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
  if (iLevel < kLogError || iLevel > kLogTrace || m_bMuted || m_logger == nullptr) return;
  const LevelRow& row = kLevels[static_cast<size_t>(iLevel)];
  if (!m_logger->should_log(row.level)) return;

  std::array<char, kMessageSize> szMessage{};
  std::vsnprintf(szMessage.data(), szMessage.size(), pszFormat, arguments);
  const ThreadIdText szThreadId = CurrentThreadIdText();
  if (iLevel == kLogTrace) {
    Send(*m_logger, row.level, row.line, szThreadId.data(), pszFunction, szMessage.data());
  } else {
    Send(*m_logger, row.level, row.line, szThreadId.data(), szMessage.data());
  }
}

void CLogger::WriteTraceScope(char sign, const char* pszFuncName) {
  if (m_bMuted || m_logger == nullptr || !m_logger->should_log(spdlog::level::trace)) return;
  Send(*m_logger, spdlog::level::trace, "{0} h : {1} {2}", CurrentThreadIdText().data(), sign,
       pszFuncName);
}

void CLogger::Mute() { m_bMuted = true; }

void CLogger::MakeAfresh() {
  m_logger.reset();
  m_bMuted = false;
  spdlog::shutdown();
}

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
