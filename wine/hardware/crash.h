// How a story makes the service fault, and hang while it handles the fault.
#pragma once

#include <string>

namespace nuvelta::wine {

// Prepares what a crash request asks for (places.h); answers whether the caller has to
// make the service's thread fault. Overflows the stack of the calling thread, and does
// not return, when that is asked for.
bool PrepareCrash(const std::string& how);

}  // namespace nuvelta::wine
