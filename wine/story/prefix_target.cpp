#include "wine/story/prefix_target.h"

#include "wine/story/wine_devices.h"
#include "wine/story/wine_registry.h"

namespace nuvelta::wine {

using virtual_notebook::Action;

void PrefixTarget::InstallModem(const virtual_notebook::ModemDescription& modem) {
  InstallModemDevice(modem);
}

void PrefixTarget::RemoveModem() { RemoveModemDevice(); }

void PrefixTarget::ChangeModem(const Action::ModemChange& change) {
  if (change.hardware_id) ChangeModemHardwareId(*change.hardware_id);
}

void PrefixTarget::SetRegistryValue(const std::string& key, const std::string& name,
                                    const virtual_notebook::RegistryValue& value) {
  wine::SetRegistryValue(key, name, value);
}

void PrefixTarget::DeleteRegistryValue(const std::string& key, const std::string& name) {
  wine::DeleteRegistryValue(key, name);
}

}  // namespace nuvelta::wine
