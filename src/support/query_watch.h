// The mobile-broadband port while the doctor asks the modem: what it answers is kept, byte
// for byte, and a set command does not get through.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/mobile_broadband.h"
#include "platform/platform.h"

namespace nuvelta::support {

// What became of a query, so far as it came.
struct QueryRecord {
  bool session = false;          // one was opened
  std::vector<uint8_t> payload;  // what was sent
  bool sent = false;
  std::optional<platform::AsyncStatus> state;    // how it ended, when it did in time
  std::optional<std::chrono::nanoseconds> took;  // until then
  std::optional<uint32_t> status;
  std::optional<std::vector<uint8_t>> data;  // of the answer
  // The call that failed last, and how.
  std::string failed_call;
  uint32_t failure = 0;
  uint32_t sets_held_back = 0;
};

// Installs the platform with its port in the place of the real one, as long as it lives.
class QueryWatch final : public platform::MobileBroadband {
 public:
  QueryWatch();
  ~QueryWatch() override;
  QueryWatch(const QueryWatch&) = delete;
  QueryWatch& operator=(const QueryWatch&) = delete;

  std::shared_ptr<platform::Modem> GetDefault() override;
  std::shared_ptr<platform::DataWriter> CreateDataWriter() override;
  std::shared_ptr<platform::AccountWatcher> CreateAccountWatcher() override;

  QueryRecord Record() const;

  struct Shared;  // with handlers that may run late

 private:
  const platform::Platform& m_before;
  platform::Platform m_platform;
  std::shared_ptr<Shared> m_shared;
};

}  // namespace nuvelta::support
