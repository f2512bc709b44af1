// The doctor: walks the service's own decision on the notebook that it runs on, now, with
// all that the decision rests on. Reads only, and sends no set command.
#pragma once

#include <string>

#include "support/diagnosis.h"

namespace nuvelta::support {

struct DoctorOptions {
  bool query = true;  // else the modem is left alone: no session, no command
};

// Needs the installed platform with its inspection, and a process in which no service runs.
Diagnosis Diagnose(const DoctorOptions& options);

// For people; with `colour` for a terminal.
std::string DiagnosisText(const Diagnosis& diagnosis, bool colour);
// One JSON object in a line, as docs/doctor.schema.json has it.
std::string DiagnosisJson(const Diagnosis& diagnosis);

}  // namespace nuvelta::support
