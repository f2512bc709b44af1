// MobileBroadbandModem and what it leads to, down to a command's result.
#pragma once

#include "wine/hardware/fake_object.h"

namespace nuvelta::wine {

ComPtr<abi::IMobileBroadbandModem> MakeFakeModem();

}  // namespace nuvelta::wine
