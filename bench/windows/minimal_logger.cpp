// The smallest program that opens the service's logger: what the executable's size
// and memory are compared with. With an argument it stays for two seconds.
#include <chrono>
#include <memory>
#include <thread>

#include <spdlog/async.h>
#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/rotating_file_sink.h>
#include <spdlog/spdlog.h>

int wmain(int argc, wchar_t** /*argv*/, wchar_t** /*envp*/) {
  const auto logger = spdlog::rotating_logger_mt<spdlog::async_factory>(
      "MAServiceLog", "minimal_logger.log", 1048576, 100, false);
  logger->set_level(spdlog::level::trace);
  logger->set_formatter(std::make_unique<spdlog::pattern_formatter>(
      "%Y-%m-%d %H:%M:%S.%e %v", spdlog::pattern_time_type::local, "\r\n"));
  logger->flush_on(spdlog::level::trace);
  spdlog::flush_every(std::chrono::seconds(3));
  logger->info("{0} i :   {1}", "00000000", "opened");
  if (argc > 1) std::this_thread::sleep_for(std::chrono::seconds(2));
  return 0;
}
