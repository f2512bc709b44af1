// The factories of the fake runtime classes. fake_activation.cpp also exports
// DllGetActivationFactory, through which the system reaches them.
#pragma once

#include "platform/windows/winrt/abi.h"

namespace nuvelta::wine {

// A new reference to the factory of the class, or REGDB_E_CLASSNOTREG. Safe on any
// thread; no exception leaves it.
HRESULT ActivationFactoryFor(HSTRING name, IActivationFactory** factory) noexcept;

}  // namespace nuvelta::wine
