// Waiting for an asynchronous operation of the mobile-broadband stack.
#pragma once

#include <cstdint>

#include "platform/mobile_broadband.h"

namespace nuvelta {

// Blocks until the operation reports its end, at most `milliseconds`. Returns
// the reported status, kStarted when the limit passed first; the operation is
// not cancelled then and may report later. Throws HresultError when no event
// can be had, and what the registration of the handler throws.
platform::AsyncStatus WaitForCompletion(platform::CommandOperation& operation,
                                        uint32_t milliseconds);

}  // namespace nuvelta
