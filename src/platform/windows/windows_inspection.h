// The inspection on Win32, for the support program only: the service does not link it.
#pragma once

#include "platform/inspection.h"

namespace nuvelta::windows {

platform::Inspection& WindowsInspection();

}  // namespace nuvelta::windows
