// The modem and its command sessions on the Windows Runtime.
#pragma once

#include <memory>

#include "platform/mobile_broadband.h"
#include "platform/windows/winrt/abi.h"
#include "platform/windows/winrt/com_ptr.h"

namespace nuvelta::windows {

// Both answer null for null.
std::shared_ptr<platform::Modem> ProjectModem(winrt::ComPtr<abi::IMobileBroadbandModem> modem);
std::shared_ptr<platform::DataWriter> ProjectDataWriter(winrt::ComPtr<abi::IDataWriter> writer);

}  // namespace nuvelta::windows
