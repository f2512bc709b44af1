// The handles that a process holds.
#pragma once

#include <cstdint>
#include <optional>

namespace nuvelta::wine {

// How many handles process `id` has open now; none when the system does not tell.
std::optional<uint32_t> CountHandles(uint32_t id);

}  // namespace nuvelta::wine
