// The control handler of the service.
#pragma once

#include <cstdint>

namespace nuvelta {

// HandlerEx: runs on the dispatcher's thread, one control after the other.
// `eventData` is a DEV_BROADCAST_HDR or a POWERBROADCAST_SETTING where the
// control has one. Always returns 0 (NO_ERROR).
uint32_t ServiceCtrlHandler(uint32_t control, uint32_t eventType, const void* eventData,
                            void* context);

}  // namespace nuvelta
