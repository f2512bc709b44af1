// The story's devices and network adapters in Wine's own setup tables: real
// devices that SetupDiGetClassDevsW lists, real subkeys of the network class key.
// They outlive the process that installs them. Used by one process at a time: the
// driver before and between, the virtual hardware while a process of the service
// lives.
#pragma once

#include <string>

#include "notebook/model/scenario.h"

namespace nuvelta::wine {

// Below the enumerator "NUVELTASTORY": the story's devices in their order, then
// the modem when it is present. In the class key: its subkey "Configuration", one
// subkey an adapter from "0000" on, then the modem's when it is present. Throws
// std::runtime_error naming the call and its error code; what has been installed
// by then stays, see RemoveStoryDevices.
void InstallStoryDevices(const virtual_notebook::Notebook& notebook);

// The modem arrives: its device appears behind the others. Its class-key subkey
// is written when it is not there yet; like a real one it stays when the modem
// leaves. Throws as above.
void InstallModemDevice(const virtual_notebook::ModemDescription& modem);
// The modem's device disappears. Nothing happens when it is not there.
void RemoveModemDevice();

// The first hardware id of the modem's device, while it is there, becomes this one.
void ChangeModemHardwareId(const std::string& hardware_id);

// Removes all that the functions above have ever installed; for the end of a
// story, and before one in case an earlier one was interrupted. Never throws.
void RemoveStoryDevices() noexcept;

}  // namespace nuvelta::wine
