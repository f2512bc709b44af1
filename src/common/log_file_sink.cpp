#include "common/log_file_sink.h"

#include <exception>
#include <utility>

namespace nuvelta {

LogFileSink::LogFileSink(std::string path, size_t max_size, size_t max_files, OnLost on_lost)
    : m_path(std::move(path)),
      m_max_size(max_size),
      m_max_files(max_files),
      m_on_lost(std::move(on_lost)) {
  Open();
}

void LogFileSink::Open() {
  m_file = std::make_unique<spdlog::sinks::rotating_file_sink_st>(m_path, m_max_size, m_max_files);
  m_file->set_formatter(formatter_->clone());
}

void LogFileSink::sink_it_(const spdlog::details::log_msg& message) {
  // Either way, in case that the clock was set back.
  if (m_file == nullptr && std::chrono::abs(message.time - m_failed) < kPause) return;
  constexpr int kAttempts = 2;
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    try {
      if (m_file == nullptr) Open();
      m_file->log(message);
      return;
    } catch (const std::exception& error) {
      Lost(error.what());
      m_file.reset();
    }
  }
  m_failed = message.time;
}

void LogFileSink::flush_() {
  try {
    if (m_file != nullptr) m_file->flush();
  } catch (const std::exception& error) {
    Lost(error.what());
  }
}

void LogFileSink::Lost(const std::string& why) const {
  if (m_on_lost) m_on_lost(why);
}

void LogFileSink::set_formatter_(std::unique_ptr<spdlog::formatter> formatter) {
  formatter_ = std::move(formatter);
  if (m_file != nullptr) m_file->set_formatter(formatter_->clone());
}

}  // namespace nuvelta
