// The process-wide service log: one rotating file per service start, written
// asynchronously by spdlog.
#pragma once

#include <atomic>
#include <cstdarg>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

#if defined(__clang__)
#define NUVELTA_PRINTF(format_index, first_argument) \
  __attribute__((format(printf, format_index, first_argument)))
#elif defined(__GNUC__)
#define NUVELTA_PRINTF(format_index, first_argument) \
  __attribute__((format(gnu_printf, format_index, first_argument)))
#else
#define NUVELTA_PRINTF(format_index, first_argument)
#endif

namespace spdlog {
class logger;
}

namespace nuvelta {

// The levels of CLogger::WriteLog. Levels 1 to 4 and 6 put the thread id and a
// tag letter before the message; only level 6 prints the function name.
inline constexpr int kLogError = 1;
inline constexpr int kLogInfo = 2;
inline constexpr int kLogWarning = 3;
inline constexpr int kLogInfoToo = 4;  // writes exactly like level 2
inline constexpr int kLogBare = 5;     // the message alone, as an info record
inline constexpr int kLogTrace = 6;

// A name that ends in ForSimulation, here as in every header, is for the virtual notebook,
// which plays many lives of the service in one process. The service that ships calls none.

// Hears what the service says: the log can be switched off, cut by retention or short of
// disk.
class LogListenerForSimulation {
 public:
  virtual ~LogListenerForSimulation() = default;
  // A message of WriteLog, whether or not it is logged. Called under the logger's
  // mutex.
  virtual void OnMessage(std::string_view message) = 0;
  // Lines of the log could not be written, for the reason given in one line. On any
  // thread.
  virtual void OnLost(const std::string& why) = 0;
};

class CLogger {
 public:
  static CLogger& GetInstance();

  // Null: nobody. Outlives MakeAfreshForSimulation; to be called while no thread logs.
  void ListenForSimulation(LogListenerForSimulation* pListener) { m_pListener = pListener; }

  // Creates the log folder, the time-stamped file and the logger, asks the
  // registry whether to write, and starts log retention on a thread of its own.
  // Called once a process, before anything logs. When the file cannot be opened
  // the service goes on without a log. Defined in init_logger.cpp.
  void InitLogger();

  // Formats like printf, cut at 4095 characters, and queues one record. Safe on
  // any thread; innermost of all locks. Levels outside 1 to 6 write nothing.
  void WriteLog(int iLevel, const char* pszFunction, const char* pszFormat, ...)
      NUVELTA_PRINTF(4, 5);
  void WriteLogV(int iLevel, const char* pszFunction, const char* pszFormat, va_list arguments)
      NUVELTA_PRINTF(4, 0);

  // Queues a trace-scope line, `sign` '+' or '-', without WriteLog's mutex.
  void WriteTraceScope(char sign, const char* pszFuncName);

  // Writes nothing until MakeAfreshForSimulation; safe on any thread.
  void MuteForSimulation();
  // Writes out what is queued and forgets the logger, as at the start of a
  // process. No other thread may log.
  void MakeAfreshForSimulation();

 private:
  CLogger() = default;

  void OnLost(const std::string& why);

  std::atomic<LogListenerForSimulation*> m_pListener = nullptr;
  std::atomic<bool> m_bMuted = false;
  std::mutex m_mutex;
  std::shared_ptr<spdlog::logger> m_logger;
};

// WriteLog at level 2 and level 1.
void LogInfo(const char* pszFunction, const char* pszFormat, ...) NUVELTA_PRINTF(2, 3);
void LogError(const char* pszFunction, const char* pszFormat, ...) NUVELTA_PRINTF(2, 3);

}  // namespace nuvelta
