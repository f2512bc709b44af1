// Use of a projected object that may be null.
#pragma once

#include <memory>

#include "platform/mobile_broadband.h"

namespace nuvelta {

inline constexpr uint32_t kPointerError = 0x80004003;  // E_POINTER

// Throws where a language projection would: at the use of a null object.
template <class Object>
const std::shared_ptr<Object>& NotNull(const std::shared_ptr<Object>& object) {
  if (object == nullptr) throw platform::HresultError{kPointerError};
  return object;
}

}  // namespace nuvelta
