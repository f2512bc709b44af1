// The objects of the command channel: modem, device service, session, operation.
#pragma once

#include <memory>

#include "notebook/machine/context.h"
#include "notebook/model/modem_model.h"
#include "platform/mobile_broadband.h"

namespace nuvelta::virtual_notebook {

std::shared_ptr<platform::Modem> MakeModem(Context& context, ModemModel& modem);
std::shared_ptr<platform::DataWriter> MakeDataWriter(Context& context);

}  // namespace nuvelta::virtual_notebook
