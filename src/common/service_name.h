// The name under which the service is registered.
#pragma once

#include <string_view>

namespace nuvelta {

inline constexpr std::u16string_view kServiceName = u"Nuvelta Wireless AUTH Service HX2208";

}  // namespace nuvelta
