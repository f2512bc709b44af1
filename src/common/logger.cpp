#include "common/logger.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <string_view>

#include <spdlog/spdlog.h>

#include "platform/clock.h"
#include "platform/platform.h"
#include "platform/threads.h"

namespace nuvelta {

namespace {

constexpr size_t kMessageSize = 4096;  // with the terminator
constexpr size_t kNameSize = 1024;
constexpr size_t kHeadSize = 32;

struct LevelRow {
  spdlog::level::level_enum level;
  std::string_view tag;  // between thread id and message
};

// Indexed by WriteLog's level; a bare line has neither thread id nor tag.
constexpr std::array<LevelRow, 7> kLevels{{
    {spdlog::level::off, ""},
    {spdlog::level::err, " e :   "},
    {spdlog::level::info, " i :   "},
    {spdlog::level::warn, " w :   "},
    {spdlog::level::info, " i :   "},
    {spdlog::level::info, ""},
    {spdlog::level::trace, " h :   "},
}};

// The text of one record, put together in place: this runs under the caller's
// locks, for every line.
class LineText {
 public:
  // Eight lower-case hexadecimal digits.
  void AddThreadId() {
    const uint32_t id = platform::Os().threads->GetCurrentThreadId();
    for (unsigned shift = 32; shift > 0;) {
      shift -= 4;
      m_text[m_size++] = "0123456789abcdef"[(id >> shift) & 0xFU];
    }
  }

  // At most kNameSize characters.
  void Add(std::string_view text) {
    m_size += text.copy(m_text.data() + m_size, std::min(text.size(), kNameSize));
  }

  // Formats like vsnprintf into kMessageSize bytes.
  void AddMessage(const char* pszFormat, va_list arguments) {
    char* message = m_text.data() + m_size;
    message[0] = '\0';
    const int length = std::vsnprintf(message, kMessageSize, pszFormat, arguments);
    m_size +=
        length < 0 ? std::strlen(message) : std::min(static_cast<size_t>(length), kMessageSize - 1);
  }

  // All that was added behind `begin`.
  std::string_view From(size_t begin) const { return {m_text.data() + begin, m_size - begin}; }
  size_t Size() const { return m_size; }

  // A log that cannot take the record (out of memory, or already closed while the
  // process exits) must not harm its caller.
  void Send(spdlog::logger& logger, spdlog::level::level_enum level) const noexcept {
    try {
      logger.log(platform::Os().clock->Now(), spdlog::source_loc{}, level,
                 spdlog::string_view_t(m_text.data(), m_size));
    } catch (...) {
    }
  }

 private:
  size_t m_size = 0;
  std::array<char, kHeadSize + kNameSize + kMessageSize> m_text;
};

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
  if (iLevel < kLogError || iLevel > kLogTrace || m_bMuted) return;
  const LevelRow& row = kLevels[static_cast<size_t>(iLevel)];
  LogListenerForSimulation* const pListener = m_pListener;
  const bool bLogged = m_logger != nullptr && m_logger->should_log(row.level);
  if (!bLogged && pListener == nullptr) return;

  LineText line;
  if (iLevel != kLogBare) line.AddThreadId();
  line.Add(row.tag);
  if (iLevel == kLogTrace) {
    line.Add(pszFunction);
    line.Add(", ");
  }
  const size_t message = line.Size();
  line.AddMessage(pszFormat, arguments);
  if (pListener != nullptr) pListener->OnMessage(line.From(message));
  if (bLogged) line.Send(*m_logger, row.level);
}

void CLogger::WriteTraceScope(char sign, const char* pszFuncName) {
  if (m_bMuted || m_logger == nullptr || !m_logger->should_log(spdlog::level::trace)) return;
  LineText line;
  line.AddThreadId();
  line.Add(sign == '+' ? " h : + " : " h : - ");
  line.Add(pszFuncName);
  line.Send(*m_logger, spdlog::level::trace);
}

void CLogger::OnLost(const std::string& why) {
  LogListenerForSimulation* const pListener = m_pListener;
  if (pListener != nullptr) pListener->OnLost(why);
}

void CLogger::MuteForSimulation() { m_bMuted = true; }

void CLogger::MakeAfreshForSimulation() {
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
