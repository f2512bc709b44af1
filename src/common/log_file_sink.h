// The rotating log file of the service.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include <spdlog/sinks/base_sink.h>
#include <spdlog/sinks/rotating_file_sink.h>

namespace nuvelta {

// spdlog's rotating file, opened again when something fails. By itself it stays closed
// once a rotation has found the file in use by others, and then writes to a null file.
class LogFileSink final : public spdlog::sinks::base_sink<std::mutex> {
 public:
  // After a failed attempt; lines of that time are lost.
  static constexpr std::chrono::seconds kPause{1};

  using OnLost = std::function<void(const std::string& why)>;

  // Opens the file to append. Rotates at `max_size` bytes and keeps `max_files` old
  // ones. Throws spdlog::spdlog_ex when the file cannot be opened. `on_lost`, unless
  // empty, is told each time that a line could not be written.
  LogFileSink(std::string path, size_t max_size, size_t max_files, OnLost on_lost = {});

 private:
  void sink_it_(const spdlog::details::log_msg& message) override;
  void flush_() override;
  void set_formatter_(std::unique_ptr<spdlog::formatter> formatter) override;
  void Open();
  void Lost(const std::string& why) const;

  const std::string m_path;
  const size_t m_max_size;
  const size_t m_max_files;
  const OnLost m_on_lost;
  std::unique_ptr<spdlog::sinks::rotating_file_sink_st> m_file;  // null while it cannot be opened
  spdlog::log_clock::time_point m_failed;
};

}  // namespace nuvelta
