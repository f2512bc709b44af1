// Mobile broadband on the Windows Runtime.
#pragma once

#include <memory>

#include "platform/mobile_broadband.h"

namespace nuvelta::windows {

class WindowsMobileBroadband final : public platform::MobileBroadband {
 public:
  std::shared_ptr<platform::Modem> GetDefault() override;
  std::shared_ptr<platform::DataWriter> CreateDataWriter() override;
  std::shared_ptr<platform::AccountWatcher> CreateAccountWatcher() override;
};

}  // namespace nuvelta::windows
