// The mobile-broadband port, telling a watch of the commands and their answers.
#pragma once

#include <memory>

#include "lives/watch.h"
#include "platform/mobile_broadband.h"

namespace nuvelta::explore {

class WatchedMobileBroadband final : public platform::MobileBroadband {
 public:
  // Tells the watch while `on`.
  WatchedMobileBroadband(platform::MobileBroadband& inner, Watch& watch, const bool& on)
      : m_inner(inner), m_watch(watch), m_on(on) {}

  std::shared_ptr<platform::Modem> GetDefault() override;
  std::shared_ptr<platform::DataWriter> CreateDataWriter() override;
  std::shared_ptr<platform::AccountWatcher> CreateAccountWatcher() override;

 private:
  platform::MobileBroadband& m_inner;
  Watch& m_watch;
  const bool& m_on;
};

}  // namespace nuvelta::explore
