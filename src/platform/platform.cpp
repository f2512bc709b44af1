#include "platform/platform.h"

#include <atomic>

namespace nuvelta::platform {

namespace {
std::atomic<const Platform*> g_installed{nullptr};
}  // namespace

const Platform& Os() noexcept { return *g_installed.load(std::memory_order_relaxed); }

void Install(const Platform* platform) noexcept { g_installed.store(platform); }

}  // namespace nuvelta::platform
