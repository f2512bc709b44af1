// MobileBroadbandAccountWatcher.
#pragma once

#include "wine/hardware/fake_object.h"

namespace nuvelta::wine {

// Its handlers run on threads of the stage.
ComPtr<abi::IMobileBroadbandAccountWatcher> MakeFakeAccountWatcher();

}  // namespace nuvelta::wine
