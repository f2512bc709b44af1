#include "support/doctor.h"

#include "platform/clock.h"
#include "platform/platform.h"
#include "support/inspections.h"

namespace nuvelta::support {

namespace {

// What a run that leaves the modem alone cannot come to.
Cause WithoutQuery(const ModemFacts& modem) {
  if (modem.error != 0) return Cause::kPlatformException;
  if (!modem.present) return Cause::kModemVanished;
  return modem.vendor_service ? Cause::kNotAsked : Cause::kVendorServiceMissing;
}

// The rehearsal comes first: what it asks, it asks as the service would.
Rehearsal RehearseWatched(bool query, ModemFacts& modem) {
  const QueryWatch watch;
  Rehearsal rehearsal = Rehearse(query);
  Command command = rehearsal.run.evidence.query;
  if (query && !rehearsal.queried) command = AskModem();
  modem = InspectModem();
  modem.asked = query;
  modem.query = watch.Record();
  modem.milliseconds = command.milliseconds;
  modem.level = command.level;
  return rehearsal;
}

}  // namespace

Diagnosis Diagnose(const DoctorOptions& options) {
  Diagnosis diagnosis;
  diagnosis.time = LocalTime(platform::Os().clock->time());
  diagnosis.run = RehearseWatched(options.query, diagnosis.modem).run;
  if (diagnosis.run.cause == Cause::kNotAsked) diagnosis.run.cause = WithoutQuery(diagnosis.modem);
  diagnosis.service = InspectService();
  diagnosis.log_folder = InspectLogFolder();
  diagnosis.switches = InspectSwitches();
  diagnosis.firmware = InspectFirmware();
  diagnosis.fcc = InspectFcc();
  diagnosis.network = InspectAdapters();
  diagnosis.devices = InspectDevices();
  return diagnosis;
}

}  // namespace nuvelta::support
