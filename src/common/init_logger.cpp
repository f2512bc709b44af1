// Apart from logger.cpp because it asks the registry settings, which log.
#include <chrono>
#include <cstdio>
#include <memory>
#include <string>

#include <spdlog/async.h>
#include <spdlog/pattern_formatter.h>
#include <spdlog/spdlog.h>

#include "common/common_util.h"
#include "common/log_file_sink.h"
#include "common/log_folder.h"
#include "common/log_retention.h"
#include "common/logger.h"
#include "platform/environment.h"
#include "platform/files.h"
#include "platform/platform.h"
#include "platform/threads.h"

namespace nuvelta {

namespace {

constexpr size_t kMaxFileSize = 1048576;
constexpr size_t kMaxFiles = 100;
constexpr std::chrono::seconds kFlushInterval{3};

// Null when the file cannot be opened or no thread can be had for the writer.
std::shared_ptr<spdlog::logger> CreateFileLogger(const std::string& path,
                                                 const LogFileSink::OnLost& on_lost) {
  try {
    auto logger = spdlog::async_factory::create<LogFileSink>(
        "MAServiceLog", platform::Os().files->LibraryPath(path), kMaxFileSize, kMaxFiles, on_lost);
    logger->set_level(spdlog::level::trace);
    logger->set_formatter(std::make_unique<spdlog::pattern_formatter>(
        "%Y-%m-%d %H:%M:%S.%e %v", spdlog::pattern_time_type::local, "\r\n"));
    logger->flush_on(spdlog::level::trace);
    // Off until the registry has been asked: with logging switched off the file
    // exists and stays empty.
    logger->set_level(spdlog::level::off);
    return logger;
  } catch (const std::exception& error) {
    // A service without its log is still worth more than no service. There is no
    // log to say so in, so it goes to standard output.
    platform::Os().environment->WriteStandardOutput(std::string("no service log: ") + error.what() +
                                                    "\n");
    on_lost(error.what());
    return nullptr;
  }
}

// Every message is flushed as it is written, so the log can do without.
void StartPeriodicFlush() {
  try {
    spdlog::flush_every(kFlushInterval);
  } catch (const std::exception&) {
  }
}

}  // namespace

void CLogger::InitLogger() {
  const std::string folder = BuildLogFolderPath();
  CreateFolders(folder);
  m_logger =
      CreateFileLogger(BuildLogFilePath(folder), [this](const std::string& why) { OnLost(why); });
  StartPeriodicFlush();
  if (CommonUtil::IsEnableServiceLog() && m_logger != nullptr) {
    m_logger->set_level(spdlog::level::trace);
  }
  platform::Os().threads->StartDetachedThread(
      [] { DeleteFileWhileExceedMaxSizeAndTime(BuildLogFolderPath()); }, "log retention");
}

}  // namespace nuvelta
